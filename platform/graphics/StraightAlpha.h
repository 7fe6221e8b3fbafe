#pragma once

#include <cstddef>
#include <cstdint>

namespace qz {

/// Converts `count` premultiplied pixels to straight ones: c = 255 p / a rounded, at most 255, and black where alpha is
/// 0. Converting back with p = c a / 255 rounded restores every p up to a. `straight` may be the pixels themselves.
void unpremultiply(const uint8_t* pixels, size_t count, uint8_t* straight);

}  // namespace qz
