#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qz {

/// A mask's rows and the pixels under them. Strides, from a row to the next, are in bytes.
struct CoverageRows {
    const uint8_t* coverage;
    size_t coverageStride;
    uint8_t* pixels;
    size_t pixelStride;
    size_t width, height;
};

/// The innermost loops of drawing, over rows of bytes: one set for each width of registers. The arithmetic is the same
/// in all; products are divided by 255 and rounded to the nearest integer.
struct PixelRows {
    const char* name;
    /// Mixes a premultiplied opaque colour, R, G, B, A, into the pixels: by `alpha` of 255 where their coverage is 255.
    void (*blendCoverage)(const CoverageRows& rows, const uint8_t* opaque, uint8_t alpha);
    /// Lays `width` premultiplied pixels, thinned to `alpha` of 255, over others.
    void (*blendPixels)(const uint8_t* source, size_t width, uint8_t alpha, uint8_t* pixels);
    /// Coverage of either: 1 - (1 - a) (1 - b), into `target`.
    void (*uniteCoverage)(const uint8_t* coverage, size_t width, uint8_t* target);
};

/// The loops go by this many pixels. Where more than the width may be read, and rewritten as it was, up to the next
/// multiple, callers round the width up and save the loop its careful end.
inline constexpr size_t kPixelBlock = 8;

/// Those that this machine can run, the best last.
std::vector<const PixelRows*> pixelRowsOfThisMachine();
/// The best.
const PixelRows& pixelRows();

}  // namespace qz
