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

/// What attributes say, as values: of a run in `TitleStyle`, of a whole title in `FrameStyle`. Lengths are points of
/// the screen, y growing downward. A value of the wrong kind, or a number that is not finite, counts as absent.

/// A copy of the glyphs beneath them.
struct Layer {
    /// One that hides next to nothing is not worth drawing.
    bool isVisible() const { return color && color->alphaComponent() > 0.001f; }

    Ref<NSColor> color;
    /// Of the pen that goes along the outlines: half of it shows on each side. May be below 0.
    double width = 0;
    NSPoint offset;
};

/// The layers of a run from the uppermost down, as many as the vocabulary has, the invisible ones too.
std::vector<Layer> layersOf(const NSDictionary& attributes);

/// Whether a flag of the vocabulary is set to anything but 0.
bool isOn(const NSDictionary& attributes, const NSString& flag);

/// How the letters of a run look.
struct TitleStyle {
    Ref<NSFont> font;    ///< of attributes that are complete; else null
    Ref<NSColor> color;  ///< never null
    double kern = 0;
    double slant = 0;  ///< to the right, for each unit of height
    bool isUnderlined = false;
    bool isStruckThrough = false;
    std::vector<Layer> layers;
};

TitleStyle titleStyleOf(const NSDictionary& attributes);

/// Between a text and the edges of its screen.
struct Margins {
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
    friend auto operator<=>(const Margins&, const Margins&) = default;

    /// In the order in which they are stored.
    std::array<double, 4> sides() const { return {left, right, top, bottom}; }
    /// The array that `QzBoundingMarginsAttribute` holds, of 32-bit floats.
    Ref<NSObject> stored() const;
};

/// Empty unless the value is an array of at least four finite numbers.
std::optional<Margins> marginsFrom(const Ref<NSObject>& value);

enum class VerticalAlignment { top, middle, bottom };

/// The box round a text.
struct TextBox {
    enum class Form { none, outlined, filled };
    bool isVisible() const { return form != Form::none && color && color->alphaComponent() > 0.001f; }

    Form form = Form::none;
    Ref<NSColor> color;  ///< null only without a box
};

TextBox textBoxOf(const NSDictionary& attributes);

/// Where a title stands, and what is round it.
struct FrameStyle {
    /// These win over the area.
    std::optional<Margins> margins;
    /// In fractions of the screen.
    std::optional<NSRect> area;
    VerticalAlignment vertical = VerticalAlignment::top;
    std::optional<NSTextAlignment> horizontal;
    TextBox box;

    /// What margins or area leave free of a screen.
    Margins marginsOn(NSSize screen) const;
};

/// Margins and areas that are malformed are reported in a log line.
FrameStyle frameStyleOf(const NSDictionary& attributes);

}  // namespace qz
