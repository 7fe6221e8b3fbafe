#pragma once

#include "platform/graphics/CoverageMask.h"

namespace qz {

/// Whether `addOutlineCoverage` serves: the shape says that it is a glyph's outline, its pen is even, and it lies near
/// enough to the box for single precision.
bool isServedByAreas(const DeviceShape& shape, const PixelRect& box);

/// Adds to the mask what a glyph's outline covers of its box, filled or stroked, as `uniteMasks` would; writes it when
/// nothing is covered yet.
///
/// Sums the exact area of each pixel on the inner side of each line, with its sign, and cuts the sum at the whole pixel,
/// as font rasterisers do. That is the non-zero rule, except that pixels which hold several edges of overlapping
/// contours come out heavier. A stroke is the sum of two borders of each contour, all of whose turns are positive, so
/// it has no holes. Several times as fast as a rasteriser that keeps edges apart.
void addOutlineCoverage(const DeviceShape& shape, bool isFirst, CoverageMask& mask);

}  // namespace qz
