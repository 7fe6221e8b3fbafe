#pragma once

#include <optional>
#include <variant>
#include <vector>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/StraightColor.h"

namespace qz {

/// A colour at a position along a gradient, 0 at its start and 1 at its end; it may lie outside.
struct GradientStop {
    double offset = 0;
    StraightColor color;
};

/// Colours along a line, between two circles, or around a point. Colours are interpolated premultiplied.
struct Gradient {
    enum class Kind { linear, radial, sweep };
    /// The extension beyond the first and the last stop.
    enum class Extend { pad, repeat, reflect };

    Kind kind = Kind::linear;
    Extend extend = Extend::pad;
    /// The end points; for a radial gradient, the centres of its circles; for a sweep, `start` is the centre.
    NSBezierPath::Point start{0, 0}, end{0, 0};
    double startRadius = 0, endRadius = 0;
    /// In radians from the x axis toward the y axis.
    double startAngle = 0, endAngle = 0;
    /// In ascending order; a gradient without stops paints nothing.
    std::vector<GradientStop> stops;
};

/// The fill of coverage. A gradient's points are in the user space where it is drawn, and so is a bitmap: premultiplied
/// RGBA, one unit per pixel, with its top left corner at the origin and y downward; scaled down, pixels are averaged,
/// scaled up, interpolated.
using Paint = std::variant<StraightColor, Gradient, Ref<NSBitmapImageRep>>;

/// The single colour that represents a paint: that of a gradient's first stop, black for a bitmap.
StraightColor mainColorOf(const Paint& paint);

}  // namespace qz
