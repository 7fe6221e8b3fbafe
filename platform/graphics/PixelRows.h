#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qz {

/// A mask's rows and the pixels under them. Strides are in bytes.
struct CoverageRows {
    const uint8_t* coverage;
    size_t coverageStride;
    uint8_t* pixels;
    size_t pixelStride;
    size_t width, height;
};

/// The innermost loops of drawing, over rows of bytes, with one set per register width. All have the same arithmetic:
/// products are divided by 255 and rounded to the nearest integer.
struct PixelRows {
    const char* name;
    /// Blends an opaque colour, R, G, B, A, into the pixels, with an opacity of `alpha` of 255 where coverage is 255.
    void (*blendCoverage)(const CoverageRows& rows, const uint8_t* opaque, uint8_t alpha);
    /// Blends `width` premultiplied pixels over others with an opacity of `alpha` of 255.
    void (*blendPixels)(const uint8_t* source, size_t width, uint8_t alpha, uint8_t* pixels);
    /// Unites coverage into `target`: 1 - (1 - a) (1 - b).
    void (*uniteCoverage)(const uint8_t* coverage, size_t width, uint8_t* target);
};

/// The loops process this many pixels at a time. If memory up to the next multiple may be read, and rewritten
/// unchanged, callers should round the width up to avoid the slow tail.
inline constexpr size_t kPixelBlock = 8;

/// The sets that this machine can run, the best one last.
std::vector<const PixelRows*> pixelRowsOfThisMachine();
/// The best set for this machine.
const PixelRows& pixelRows();

}  // namespace qz
