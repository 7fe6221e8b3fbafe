#pragma once

#include <algorithm>
#include <cstdint>

namespace qz {

/// A rectangle of whole device pixels, origin at the top left of the bitmap.
struct PixelRect {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    // In 64 bits: x near the end of its range plus a width does not fit in 32.
    int64_t right() const { return int64_t{x} + width; }
    int64_t bottom() const { return int64_t{y} + height; }

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// The overlap; the zero rectangle when there is none.
inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const int32_t x = std::max(a.x, b.x);
    const int32_t y = std::max(a.y, b.y);
    const int64_t width = std::min(a.right(), b.right()) - x;
    const int64_t height = std::min(a.bottom(), b.bottom()) - y;
    if (width <= 0 || height <= 0) return {};
    return {x, y, static_cast<int32_t>(width), static_cast<int32_t>(height)};
}

}  // namespace qz
