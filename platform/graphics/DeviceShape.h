#pragma once

#include <optional>

#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/PixelRect.h"

namespace qz {

/// A rectangle in fractional device pixels; empty while its minimum is above its maximum.
struct DeviceBox {
    double minX = 1, minY = 1, maxX = 0, maxY = 0;

    bool isEmpty() const { return !(minX <= maxX && minY <= maxY); }
    DeviceBox grownBy(double margin) const { return {minX - margin, minY - margin, maxX + margin, maxY + margin}; }
    /// Extends the box by the points up to (reachX, reachY) on each side of `point`.
    void include(NSBezierPath::Point point, double reachX = 0, double reachY = 0);
    /// The pixels of `within` that it touches, or the zero rectangle.
    PixelRect pixels(const PixelRect& within) const;
};

/// The pen that draws a line: a circle in user space, which an uneven transform makes an ellipse on the device.
struct DevicePen {
    /// From the circle to the device, without translation, scaled so that the longest radius of the ellipse is that of
    /// the circle.
    NSAffineTransform circleToDevice{};
    /// In pixels, at most `kHalfWidthMax`.
    double halfWidth = 0.5;
    NSLineCapStyle cap = NSLineCapStyle::butt;
    NSLineJoinStyle join = NSLineJoinStyle::miter;
    /// At least 1, and small enough that no miter is longer than `kHalfWidthMax`.
    double miterLimit = 10;

    /// The limit of a pen's half width, whatever is requested: bitmaps are smaller, and it fits fixed-point arithmetic.
    static constexpr double kHalfWidthMax = 1 << 20;
    /// The farthest distance of a stroke from its path, in pixels, including caps and miters.
    double reach() const;
};

/// The area covered by a fill or a stroke, in device pixels with the origin at the top left. A plain value, independent
/// of the path it was made from.
class DeviceShape {
public:
    static DeviceShape fillOf(const NSBezierPath& path, const NSAffineTransform& toDevice);
    /// Stroked in user space: the transform acts on the pen too. A line width of 0 or less is the thinnest line, one
    /// pixel wide.
    static DeviceShape strokeOf(const NSBezierPath& path, const NSAffineTransform& toDevice);

    /// The same for the outline of a glyph: closed contours that all wind one way around the filled area. Such shapes
    /// are rasterised faster.
    static DeviceShape fillOfGlyph(const NSBezierPath& outline, const NSAffineTransform& toDevice);
    static DeviceShape strokeOfGlyph(const NSBezierPath& outline, const NSAffineTransform& toDevice);

    /// The pixels of `within` that the shape may touch, or the zero rectangle. A shape with a coordinate that is not
    /// finite, or with a pen flattened to nothing, touches no pixels.
    PixelRect pixelBounds(const PixelRect& within) const { return bounds_.pixels(within); }

    /// Whether this is the outline of a glyph (see `fillOfGlyph`).
    bool isGlyphOutline() const { return isGlyphOutline_; }

    /// In device pixels.
    const NSBezierPath& path() const { return path_; }
    /// No value for a fill.
    const std::optional<DevicePen>& pen() const { return pen_; }
    /// Contains every point of the path, including control points.
    const DeviceBox& pathBounds() const { return pathBounds_; }

private:
    DeviceShape(const NSBezierPath& path, const NSAffineTransform& toDevice);

    NSBezierPath path_;
    std::optional<DevicePen> pen_;
    bool isGlyphOutline_ = false;
    DeviceBox pathBounds_;
    // Empty if the shape cannot be drawn.
    DeviceBox bounds_;
};

}  // namespace qz
