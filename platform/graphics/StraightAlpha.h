#pragma once

#include <cstddef>
#include <cstdint>

namespace qz {

/// Turns `count` premultiplied pixels into straight ones: c = 255 p / a to the nearest, at most 255, and black where
/// nothing is. Reading it back by p = c a / 255 to the nearest gives p again for every p up to a. `straight` may be the
/// pixels themselves.
void unpremultiply(const uint8_t* pixels, size_t count, uint8_t* straight);

}  // namespace qz
