#pragma once

#include <array>
#include <optional>
#include <vector>

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"

namespace qz {

/// Attributes as plain values: a run's in `TitleStyle`, a whole title's in `FrameStyle`. Lengths are in points of the
/// screen, y growing downward. A value of the wrong kind, or a number that is not finite, counts as absent.

/// A copy of the glyphs, drawn beneath them.
struct Layer {
    /// An almost transparent layer is not worth drawing.
    bool isVisible() const { return color && color->alphaComponent() > 0.001f; }

    Ref<NSColor> color;
    /// The width of the pen along the outlines, half of which shows on each side. May be negative.
    double width = 0;
    NSPoint offset;
};

/// All layers of the vocabulary for a run, from the top down, including invisible ones.
std::vector<Layer> layersOf(const NSDictionary& attributes);

/// Whether a flag of the vocabulary is set and not 0.
bool isOn(const NSDictionary& attributes, const NSString& flag);

/// The look of a run's letters.
struct TitleStyle {
    Ref<NSFont> font;    ///< null unless the attributes are complete
    Ref<NSColor> color;  ///< never null
    double kern = 0;
    double slant = 0;  ///< to the right, per unit of height
    bool isUnderlined = false;
    bool isStruckThrough = false;
    std::vector<Layer> layers;
};

TitleStyle titleStyleOf(const NSDictionary& attributes);

/// The distances between a text and the edges of its screen.
struct Margins {
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
    friend auto operator<=>(const Margins&, const Margins&) = default;

    /// In storage order.
    std::array<double, 4> sides() const { return {left, right, top, bottom}; }
    /// The array of 32-bit floats for `QzBoundingMarginsAttribute`.
    Ref<NSObject> stored() const;
};

/// No value unless it is an array of at least four finite numbers.
std::optional<Margins> marginsFrom(const Ref<NSObject>& value);

enum class VerticalAlignment { top, middle, bottom };

/// The box around a text.
struct TextBox {
    enum class Form { none, outlined, filled };
    bool isVisible() const { return form != Form::none && color && color->alphaComponent() > 0.001f; }

    Form form = Form::none;
    Ref<NSColor> color;  ///< null only if there is no box
};

TextBox textBoxOf(const NSDictionary& attributes);

/// The placement of a title and the box around it.
struct FrameStyle {
    /// They take precedence over the area.
    std::optional<Margins> margins;
    /// In fractions of the screen.
    std::optional<NSRect> area;
    VerticalAlignment vertical = VerticalAlignment::top;
    std::optional<NSTextAlignment> horizontal;
    TextBox box;

    /// The margins on a screen, given by margins or area.
    Margins marginsOn(NSSize screen) const;
};

/// Malformed margins and areas are reported in a log line.
FrameStyle frameStyleOf(const NSDictionary& attributes);

}  // namespace qz
