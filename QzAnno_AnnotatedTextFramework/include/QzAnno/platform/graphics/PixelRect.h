#pragma once

#include <algorithm>
#include <cstdint>

namespace qz {

/// A rectangle of whole device pixels, origin at the top left of the bitmap.
struct PixelRect {
    int32_t x = 0;       ///< of the leftmost column
    int32_t y = 0;       ///< of the topmost row
    int32_t width = 0;   ///< columns
    int32_t height = 0;  ///< rows

    /// Whether it holds no pixel: a width or height that is not above 0.
    bool isEmpty() const { return width <= 0 || height <= 0; }
    /// The first column (row) behind it. In 64 bits: x near the end of its range plus a width does not fit in 32.
    ///@{
    int64_t right() const { return int64_t{x} + width; }
    int64_t bottom() const { return int64_t{y} + height; }
    ///@}

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// The overlap of `box`, moved by (dx, dy), with another; the zero rectangle when there is none. In 64 bits: a box may
/// be moved from one end of the range to the other.
inline PixelRect intersectionOfMoved(const PixelRect& box, int32_t dx, int32_t dy, const PixelRect& within) {
    const int64_t x = std::max<int64_t>(int64_t{box.x} + dx, within.x);
    const int64_t y = std::max<int64_t>(int64_t{box.y} + dy, within.y);
    const int64_t width = std::min(box.right() + dx, within.right()) - x;
    const int64_t height = std::min(box.bottom() + dy, within.bottom()) - y;
    if (width <= 0 || height <= 0) return {};
    return {static_cast<int32_t>(x), static_cast<int32_t>(y), static_cast<int32_t>(width),
            static_cast<int32_t>(height)};
}

/// The overlap; the zero rectangle when there is none.
inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    return intersectionOfMoved(a, 0, 0, b);
}

/// The smallest rectangle around both; an empty one has no part in it. Both lie within a bitmap.
inline PixelRect unionOf(const PixelRect& a, const PixelRect& b) {
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    const int32_t x = std::min(a.x, b.x);
    const int32_t y = std::min(a.y, b.y);
    return {x, y, static_cast<int32_t>(std::max(a.right(), b.right()) - x),
            static_cast<int32_t>(std::max(a.bottom(), b.bottom()) - y)};
}

}  // namespace qz
