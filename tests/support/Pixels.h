#pragma once

#include <array>
#include <functional>
#include <ostream>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz::test {

/// A premultiplied RGBA pixel.
struct Pixel {
    uint8_t red, green, blue, alpha;
    friend bool operator==(const Pixel&, const Pixel&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Pixel& p) {
        return out << "rgba(" << +p.red << ", " << +p.green << ", " << +p.blue << ", " << +p.alpha << ")";
    }
};

inline constexpr Pixel kClear = {0, 0, 0, 0};

inline Pixel pixelAt(const NSBitmapImageRep& bitmap, int32_t x, int32_t y) {
    const uint8_t* p = bitmap.row(y) + 4 * x;
    return {p[0], p[1], p[2], p[3]};
}

/// The smallest box of pixels for which `counts` holds: first column and row, and those after the last. All 0 when
/// no pixel counts.
struct PixelBox {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    int32_t width() const { return right - left; }
    int32_t height() const { return bottom - top; }
    friend bool operator==(const PixelBox&, const PixelBox&) = default;
    friend std::ostream& operator<<(std::ostream& out, const PixelBox& b) {
        return out << "x " << b.left << " to " << b.right << ", y " << b.top << " to " << b.bottom;
    }
};

inline PixelBox boxOf(const NSBitmapImageRep& bitmap, const std::function<bool(Pixel)>& counts) {
    PixelBox box = {bitmap.pixelsWide(), bitmap.pixelsHigh(), 0, 0};
    for (int32_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (int32_t x = 0; x < bitmap.pixelsWide(); ++x) {
            if (!counts(pixelAt(bitmap, x, y))) continue;
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                   std::max(box.bottom, y + 1)};
        }
    }
    return box.right == 0 ? PixelBox{} : box;
}

inline PixelBox inkOf(const NSBitmapImageRep& bitmap) {
    return boxOf(bitmap, [](Pixel p) { return p.alpha != 0; });
}

}  // namespace qz::test
