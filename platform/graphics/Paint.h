#pragma once

#include <optional>
#include <variant>
#include <vector>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/StraightColor.h"

namespace qz {

/// A colour at a place along a gradient, 0 at its start and 1 at its end; it may lie beyond either.
struct GradientStop {
    double offset = 0;
    StraightColor color;
};

/// Colours along a line, between two circles, or around a point. Colours mix premultiplied.
struct Gradient {
    enum class Kind { linear, radial, sweep };
    /// What shows beyond the first and the last stop.
    enum class Extend { pad, repeat, reflect };

    Kind kind = Kind::linear;
    Extend extend = Extend::pad;
    /// From and to; the centres of a radial gradient's circles; `start` is the centre of a sweep.
    NSBezierPath::Point start{0, 0}, end{0, 0};
    double startRadius = 0, endRadius = 0;
    /// In radians from the x axis, growing from x to y.
    double startAngle = 0, endAngle = 0;
    /// In rising order; a gradient without stops paints nothing.
    std::vector<GradientStop> stops;
};

/// What coverage is filled with. A gradient's points are those of the user space in which it is drawn, and so are a
/// bitmap's: premultiplied RGBA, one unit a pixel, its top left corner at the origin and y downward; made smaller, each
/// pixel is the mean of those that fall on it, made larger, they are interpolated.
using Paint = std::variant<StraightColor, Gradient, Ref<NSBitmapImageRep>>;

/// The single colour that stands for a paint where only one will do: that of a gradient's first stop, black for a
/// bitmap.
StraightColor mainColorOf(const Paint& paint);

}  // namespace qz
