#pragma once

#include <cstddef>
#include <cstdint>

namespace qz {

// The innermost loops of drawing, over rows of bytes. Each is compiled for the registers every machine has and for
// wider ones, and picks at load; the arithmetic is the same in all.

/// a / 255 rounded to the nearest integer, for a of up to 255 x 255.
constexpr uint16_t dividedBy255(uint32_t a) {
    const uint32_t rounded = a + 128;
    return static_cast<uint16_t>((rounded + (rounded >> 8)) >> 8);
}

/// Mixes a premultiplied opaque colour, R, G, B, A, into `width` pixels: by `alpha` of 255 where `coverage` is 255.
void blendCoverageRow(const uint8_t* coverage, size_t width, const uint8_t (&opaque)[4], uint8_t alpha,
                      uint8_t* pixels);

/// Lays `width` premultiplied pixels, thinned to `alpha` of 255, over others.
void blendPixelRow(const uint8_t* source, size_t width, uint8_t alpha, uint8_t* pixels);

/// Coverage of either: 1 - (1 - a) (1 - b), into `target`.
void uniteCoverageRow(const uint8_t* coverage, size_t width, uint8_t* target);

}  // namespace qz
