#pragma once

#include <memory>
#include <vector>

#include "platform/graphics/Compositing.h"
#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// A colour at a place along a gradient, 0 at its start and 1 at its end; it may lie beyond either.
struct GradientStop {
    double offset = 0;
    StraightColor color;
};

/// Colours along a line, between two circles, or around a point. Colours mix premultiplied.
struct Gradient {
    enum class Kind { linear, radial, sweep };
    enum class Extend { pad, repeat, reflect };

    Kind kind = Kind::linear;
    Extend extend = Extend::pad;
    /// From and to; of a radial gradient the centres of its circles; of a sweep `start` is the centre.
    NSBezierPath::Point start{0, 0}, end{0, 0};
    double startRadius = 0, endRadius = 0;
    /// In radians from the x axis, growing from x to y.
    double startAngle = 0, endAngle = 0;
    /// In rising order.
    std::vector<GradientStop> stops;
};

/// How a group is laid over what lies beneath it, in the order of the COLR table's composite modes.
enum class CompositeMode : uint8_t {
    clear,
    source,
    destination,
    sourceOver,
    destinationOver,
    sourceIn,
    destinationIn,
    sourceOut,
    destinationOut,
    sourceAtop,
    destinationAtop,
    exclusiveOr,
    plus,
    screen,
    overlay,
    darken,
    lighten,
    colorDodge,
    colorBurn,
    hardLight,
    softLight,
    difference,
    exclusion,
    multiply,
    hue,
    saturation,
    color,
    luminosity,
};

/// Paints a small picture from clips, gradients, bitmaps and groups: what a colour glyph is made of.
///
/// Paint covers the current clip. Transforms act on what comes after them, as drawing operations nest.
class PictureCanvas {
public:
    /// For these pixels; everything else is cut off.
    explicit PictureCanvas(const PixelRect& box);
    ~PictureCanvas();

    /// Saves transform and clip, and brings them back.
    void save();
    void restore();
    void concat(const NSAffineTransform& transform);
    void clip(const NSBezierPath& path);

    void paint(StraightColor color);
    void paint(const Gradient& gradient);
    /// A premultiplied RGBA bitmap, one unit a pixel, its top left corner at the origin and y downward. Smaller, each
    /// pixel is the mean of those that fall on it; larger, they are interpolated.
    void paint(const NSBitmapImageRep& bitmap);

    void beginGroup();
    void endGroup(CompositeMode mode);

    /// What has been painted, premultiplied RGBA of the box's size; none without memory.
    Ref<NSBitmapImageRep> picture() const;

private:
    struct Surface;
    const std::unique_ptr<Surface> surface_;
};

}  // namespace qz
