#pragma once

#include <cstdint>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// Widens what is drawn in one channel of a bitmap of 32-bit pixels by `size` pixels to every side, in place.
///
/// The channel is the low-order 8 bits of a pixel read as a 32-bit integer: the first byte in memory, red in RGBA, on
/// little-endian machines. It becomes the bitwise or of itself and the greatest value in the square of 2 x size + 1
/// pixels centred on the pixel, cut at the bitmap's edges; the other three bytes of every pixel become 0.
///
/// The bitmap stays unchanged, with a line in the log or an assertion report on standard error, when its pixels are not
/// of 32 bits, its size in points is not that in pixels, `size` is negative, or memory for two planes of a byte a pixel
/// is not there or would pass 4 GiB each.
void rasterStrokeWithSize(NSBitmapImageRep& bitmap, int32_t size);

}  // namespace qz
