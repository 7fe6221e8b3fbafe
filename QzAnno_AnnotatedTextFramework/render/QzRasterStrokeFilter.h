#pragma once

#include <cstdint>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// Widens the drawing in one channel of a bitmap with 32-bit pixels by `size` pixels to every side, in place.
///
/// The channel is the low-order 8 bits of a pixel read as a 32-bit integer: on little-endian machines the first byte in
/// memory, red in RGBA. It becomes the bitwise or of itself and the greatest value in the square of 2 x size + 1 pixels
/// centred on the pixel, cut at the bitmap's edges; the other three bytes of every pixel become 0.
///
/// The bitmap is unchanged, with a log line or an assertion report on standard error, if its pixels do not have 32
/// bits, if its size in points differs from that in pixels, if `size` is negative, or if two planes of one byte per
/// pixel cannot be allocated or would exceed 4 GiB each.
void rasterStrokeWithSize(NSBitmapImageRep& bitmap, int32_t size);

}  // namespace qz
