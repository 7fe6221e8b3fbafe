#pragma once

#include <span>
#include <vector>

#include "platform/graphics/DeviceShape.h"
#include "platform/graphics/PixelRect.h"

namespace qz {

/// The coverage of each pixel in a box, from 0 to 255. A plain value without path or colour, so it can be cached and
/// blended again, elsewhere and in another colour.
struct CoverageMask {
    PixelRect box;
    /// Bytes from one row to the next, a multiple of 8 and at least the box's width.
    int32_t stride = 0;
    /// Rows from the top, stride x height bytes; bytes beyond the width are 0.
    std::vector<uint8_t> bytes;

    const uint8_t* row(int32_t index) const {
        return bytes.data() + static_cast<size_t>(index) * static_cast<size_t>(stride);
    }
    uint8_t* row(int32_t index) { return bytes.data() + static_cast<size_t>(index) * static_cast<size_t>(stride); }
    /// A mask of the box with nothing covered.
    static CoverageMask emptyOf(const PixelRect& box);
};

/// The longest side of a box that can be rendered, in pixels.
inline constexpr int32_t kCoverageSideMax = 16384;

/// Renders the coverage of `box` by all `shapes` into `mask`, reusing its storage; overlaps unite as in `uniteMasks`.
/// Without antialiasing each value is 0 or 255. A box that is empty or has a side beyond `kCoverageSideMax` gives an
/// empty mask.
void renderCoverage(std::span<const DeviceShape> shapes, const PixelRect& box, bool antialias, CoverageMask& mask);
inline void renderCoverage(const DeviceShape& shape, const PixelRect& box, bool antialias, CoverageMask& mask) {
    renderCoverage(std::span(&shape, 1), box, antialias, mask);
}

/// Unites another mask, moved by (dx, dy) pixels, with `target` inside its box: 1 - (1 - a) (1 - b), as if drawing one
/// over the other in an opaque colour. Returns the box of the added coverage.
PixelRect uniteMasks(const CoverageMask& mask, int32_t dx, int32_t dy, CoverageMask& target);

}  // namespace qz
