#pragma once

#include <algorithm>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "platform/graphics/PixelRect.h"

namespace qz {

/// The overlap of `box`, moved by (dx, dy), with another, or the zero rectangle. Computed in 64 bits, since a box may
/// be moved across the whole range.
inline PixelRect intersectionOfMoved(const PixelRect& box, int32_t dx, int32_t dy, const PixelRect& within) {
    const int64_t x = std::max<int64_t>(int64_t{box.x} + dx, within.x);
    const int64_t y = std::max<int64_t>(int64_t{box.y} + dy, within.y);
    const int64_t width = std::min(box.right() + dx, within.right()) - x;
    const int64_t height = std::min(box.bottom() + dy, within.bottom()) - y;
    if (width <= 0 || height <= 0) return {};
    return {static_cast<int32_t>(x), static_cast<int32_t>(y), static_cast<int32_t>(width),
            static_cast<int32_t>(height)};
}

/// The overlap, or the zero rectangle.
inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    return intersectionOfMoved(a, 0, 0, b);
}

/// The smallest rectangle around both, ignoring an empty one. Both must lie in a bitmap.
inline PixelRect unionOf(const PixelRect& a, const PixelRect& b) {
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    const int32_t x = std::min(a.x, b.x);
    const int32_t y = std::min(a.y, b.y);
    return {x, y, static_cast<int32_t>(std::max(a.right(), b.right()) - x),
            static_cast<int32_t>(std::max(a.bottom(), b.bottom()) - y)};
}

}  // namespace qz
