#pragma once

#include <optional>

#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/PixelRect.h"

namespace qz {

/// A rectangle in fractions of device pixels; empty while its minimum is above its maximum.
struct DeviceBox {
    double minX = 1, minY = 1, maxX = 0, maxY = 0;

    bool isEmpty() const { return !(minX <= maxX && minY <= maxY); }
    DeviceBox grownBy(double margin) const { return {minX - margin, minY - margin, maxX + margin, maxY + margin}; }
    /// Takes in the points up to (reachX, reachY) on each side of `point`.
    void include(NSBezierPath::Point point, double reachX = 0, double reachY = 0);
    /// The pixels of `within` that it touches; the zero rectangle when there are none.
    PixelRect pixels(const PixelRect& within) const;
};

/// What a line is drawn with: a circle in user space, hence an ellipse on the device under an uneven transform.
struct DevicePen {
    /// From the circle to the device, without translation, scaled so that the longest radius of the ellipse is that of
    /// the circle.
    NSAffineTransform circleToDevice{};
    /// In pixels, at most `kHalfWidthMax`.
    double halfWidth = 0.5;
    NSLineCapStyle cap = NSLineCapStyle::butt;
    NSLineJoinStyle join = NSLineJoinStyle::miter;
    /// At least 1, and such that no miter is longer than `kHalfWidthMax`.
    double miterLimit = 10;

    /// A pen reaches this far at most, whatever width is asked for: bitmaps are smaller, and fixed-point arithmetic
    /// holds it.
    static constexpr double kHalfWidthMax = 1 << 20;
    /// The farthest that a stroke reaches from its path, in pixels: caps and miters included.
    double reach() const;
};

/// The area that a fill or a stroke covers, in device pixels with the origin at the top left. A plain value,
/// independent of the path it was made from.
class DeviceShape {
public:
    static DeviceShape fillOf(const NSBezierPath& path, const NSAffineTransform& toDevice);
    /// Stroked in user space: the transform acts on the pen too. A line width of 0 or less is the thinnest line, one
    /// pixel wide.
    static DeviceShape strokeOf(const NSBezierPath& path, const NSAffineTransform& toDevice);

    /// The same of the outline of a glyph: closed contours that wind one way round what is filled. Such shapes are
    /// rasterised faster.
    static DeviceShape fillOfGlyph(const NSBezierPath& outline, const NSAffineTransform& toDevice);
    static DeviceShape strokeOfGlyph(const NSBezierPath& outline, const NSAffineTransform& toDevice);

    /// The pixels of `within` that the shape may touch; the zero rectangle when it touches none. A shape with a
    /// coordinate that is not finite, or with a pen flattened to nothing, touches none.
    PixelRect pixelBounds(const PixelRect& within) const { return bounds_.pixels(within); }

    /// The outline of a glyph: closed contours that wind one way round what is filled. Such shapes are rasterised
    /// faster.
    bool isGlyphOutline() const { return isGlyphOutline_; }

    /// In device pixels.
    const NSBezierPath& path() const { return path_; }
    /// None for a fill.
    const std::optional<DevicePen>& pen() const { return pen_; }
    /// Around every point of the path, control points included.
    const DeviceBox& pathBounds() const { return pathBounds_; }

private:
    DeviceShape(const NSBezierPath& path, const NSAffineTransform& toDevice);

    NSBezierPath path_;
    std::optional<DevicePen> pen_;
    bool isGlyphOutline_ = false;
    DeviceBox pathBounds_;
    // Empty for what cannot be drawn.
    DeviceBox bounds_;
};

}  // namespace qz
