#pragma once

#include <span>
#include <vector>

#include "platform/graphics/DeviceShape.h"
#include "platform/graphics/PixelRect.h"

namespace qz {

/// How much of each pixel of a box is covered: 0 not at all, 255 wholly. A plain value that knows neither path nor
/// colour, so it may be kept and blended again, elsewhere and in another colour.
struct CoverageMask {
    PixelRect box;
    /// Bytes from one row to the next, a multiple of 8 and at least the box's width.
    int32_t stride = 0;
    /// Rows from the top, stride x height bytes; those beyond the width are 0.
    std::vector<uint8_t> bytes;

    const uint8_t* row(int32_t index) const {
        return bytes.data() + static_cast<size_t>(index) * static_cast<size_t>(stride);
    }
    uint8_t* row(int32_t index) { return bytes.data() + static_cast<size_t>(index) * static_cast<size_t>(stride); }
    /// Nothing covered of a box.
    static CoverageMask emptyOf(const PixelRect& box);
};

/// The longest side of a box that can be rendered at once, in pixels.
inline constexpr int32_t kCoverageSideMax = 16384;

/// Renders what `shapes` cover between them of `box` into `mask`, whose storage is used again; where they overlap, as
/// `uniteMasks` says. Without antialiasing each value is 0 or 255. A box that is empty or has a side beyond
/// `kCoverageSideMax` gives the empty mask.
void renderCoverage(std::span<const DeviceShape> shapes, const PixelRect& box, bool antialias, CoverageMask& mask);
inline void renderCoverage(const DeviceShape& shape, const PixelRect& box, bool antialias, CoverageMask& mask) {
    renderCoverage(std::span(&shape, 1), box, antialias, mask);
}

/// Adds to `target`, within its box, what another mask covers when moved by (dx, dy) pixels: 1 - (1 - a) (1 - b), as
/// drawing one over the other in an opaque colour would. Returns the box of what it covers.
PixelRect uniteMasks(const CoverageMask& mask, int32_t dx, int32_t dy, CoverageMask& target);

}  // namespace qz
