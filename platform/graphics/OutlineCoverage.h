#pragma once

#include "platform/graphics/CoverageMask.h"

namespace qz {

/// Whether `addOutlineCoverage` can be used: the shape is a glyph's outline, its pen is even, and it is close enough to
/// the box for single precision.
bool isServedByAreas(const DeviceShape& shape, const PixelRect& box);

/// Unites the coverage of a glyph's outline, filled or stroked, with the mask, as `uniteMasks` would; if `isFirst`,
/// just writes it.
///
/// Sums the exact signed area of each pixel on the inner side of each line, and clamps the sum to the whole pixel, as
/// font rasterisers do. This is the non-zero rule, except that pixels with several edges of overlapping contours come
/// out heavier. A stroke is the sum of two borders of each contour, which only turn one way, so it has no holes.
/// Several times as fast as a rasteriser that tracks edges separately.
void addOutlineCoverage(const DeviceShape& shape, bool isFirst, CoverageMask& mask);

}  // namespace qz
