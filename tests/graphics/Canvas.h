#pragma once

#include <cstdint>
#include <vector>

#include "platform/graphics/NSGraphicsContext.h"

namespace qz {

/// A bitmap for drawing in black, y downward, so that alpha is coverage, with functions to inspect it.
struct Canvas {
    static constexpr int32_t kSide = 64;

    Ref<NSBitmapImageRep> bitmap;
    Ref<NSGraphicsContext> context;

    explicit Canvas(int32_t width = kSide, int32_t height = kSide, bool flipped = true)
        : bitmap(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = width, .pixelsHigh = height})),
          context(NSGraphicsContext::graphicsContextWithBitmapImageRep(bitmap, flipped)) {}

    int alphaAt(int32_t x, int32_t y) const { return bitmap->row(y)[4 * x + 3]; }

    /// The total coverage, in pixels.
    double area() const {
        double sum = 0;
        for (int32_t y = 0; y < bitmap->pixelsHigh(); ++y) {
            for (int32_t x = 0; x < bitmap->pixelsWide(); ++x) sum += alphaAt(x, y);
        }
        return sum / 255;
    }

    std::vector<uint8_t> bytes() const {
        return {bitmap->row(0), bitmap->row(0) + size_t(bitmap->bytesPerRow()) * size_t(bitmap->pixelsHigh())};
    }
};

inline NSBezierPath polyline(std::initializer_list<NSBezierPath::Point> points) {
    NSBezierPath path;
    for (const auto point : points) path.lineToPoint(point);
    return path;
}

}  // namespace qz
