#pragma once

// The loops of PixelRows.h over vectors of `kVectorBytes`, which each including file defines first: one file for the
// registers of every machine, one for wider ones. Calls no C++ standard library functions: an inline function compiled
// for one machine could end up being used on all.

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace qz {
namespace {

constexpr size_t kBlock = kPixelBlock;
constexpr size_t kBlockBytes = 4 * kBlock;

// Vector extensions of GCC and Clang; most of the following functions are one instruction.
using Bytes = uint8_t __attribute__((vector_size(kVectorBytes)));
using Words = uint16_t __attribute__((vector_size(kVectorBytes)));
using Pixels = uint32_t __attribute__((vector_size(kVectorBytes)));
// Holds the coverage of a block's pixels.
using Block = uint8_t __attribute__((vector_size(2 * kBlock)));
using BlockWords = uint16_t __attribute__((vector_size(2 * kBlock)));

#define QZ_INLINE [[gnu::always_inline]] inline

enum class Fill { none, whole, mixed };

QZ_INLINE Fill fillOf(const uint8_t* coverage) {
    uint64_t word;
    memcpy(&word, coverage, sizeof word);
    if (word == 0) return Fill::none;
    return word == UINT64_MAX ? Fill::whole : Fill::mixed;
}

QZ_INLINE Bytes loaded(const uint8_t* bytes) {
    Bytes vector;
    memcpy(&vector, bytes, sizeof vector);
    return vector;
}

// Every other byte as a word, and the rest: no byte moves, so no shuffle is needed.
template <class W, class B>
QZ_INLINE W evens(B v) {
    return (W)v & uint16_t{0xFF};
}
template <class W, class B>
QZ_INLINE W odds(B v) {
    return (W)v >> 8;
}
template <class B, class W>
QZ_INLINE B joined(W evenBytes, W oddBytes) {
    return (B)(evenBytes | oddBytes << 8);
}

template <class W>
QZ_INLINE W by255(W a) {
    const W rounded = a + uint16_t{128};
    return (rounded + (rounded >> 8)) >> 8;
}

template <class W, class B>
QZ_INLINE B product(B a, B b) {
    return joined<B>(by255(evens<W>(a) * evens<W>(b)), by255(odds<W>(a) * odds<W>(b)));
}

QZ_INLINE Bytes mixed(Bytes a, Bytes b, Bytes weight) {
    const Bytes rest = ~weight;
    return joined<Bytes>(by255(evens<Words>(a) * evens<Words>(weight) + evens<Words>(b) * evens<Words>(rest)),
                         by255(odds<Words>(a) * odds<Words>(weight) + odds<Words>(b) * odds<Words>(rest)));
}

QZ_INLINE Bytes all(uint8_t value) {
    return Bytes{} + value;
}

// The coverage of eight pixels, given in the first half, with each byte repeated four times: the weights of the pixels'
// components.
template <class B>
QZ_INLINE void spread(Block coverage, B* weights) {
    if constexpr (sizeof(B) == 16) {
        using Halves = uint16_t __attribute__((vector_size(16)));
        const Halves pairs =
            (Halves)__builtin_shufflevector(coverage, coverage, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        weights[0] = (B)__builtin_shufflevector(pairs, pairs, 0, 8, 1, 9, 2, 10, 3, 11);
        weights[1] = (B)__builtin_shufflevector(pairs, pairs, 4, 12, 5, 13, 6, 14, 7, 15);
    } else {
        // In both halves of the register, since bytes cannot cross between halves in one step.
        const B twice = __builtin_shufflevector(coverage, coverage, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14,
                                                15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
        weights[0] = __builtin_shufflevector(twice, twice, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 20, 20, 20,
                                             20, 21, 21, 21, 21, 22, 22, 22, 22, 23, 23, 23, 23);
    }
}

QZ_INLINE void blendBlock(const uint8_t* coverage, Bytes color, uint8_t alpha, uint8_t* pixels) {
    // As a number: a vector assembled in memory would stall on its parts.
    using Numbers = uint64_t __attribute__((vector_size(2 * kBlock)));
    uint64_t first;
    memcpy(&first, coverage, kBlock);
    Block block = (Block)Numbers{first, 0};
    if (alpha != 255) block = product<BlockWords>(block, Block{} + alpha);
    Bytes weights[kBlockBytes / kVectorBytes];
    spread(block, weights);
    for (size_t i = 0; i < kBlockBytes / kVectorBytes; ++i) {
        uint8_t* const at = pixels + i * kVectorBytes;
        const Bytes result = mixed(color, loaded(at), weights[i]);
        memcpy(at, &result, sizeof result);
    }
}

QZ_INLINE void blendPixelBlock(const uint8_t* source, uint8_t alpha, uint8_t* pixels) {
    for (size_t i = 0; i < kBlockBytes; i += kVectorBytes) {
        Bytes over = loaded(source + i);
        if (alpha != 255) over = product<Words>(over, all(alpha));
        const Pixels high = (Pixels)over & 0xFF000000u;  // alpha is the last of four bytes, on a little-endian machine
        const Pixels two = high | high >> 8;
        const Bytes kept = product<Words>(loaded(pixels + i), ~(Bytes)(two | two >> 16));
        const Bytes sum = over + kept;
        // A sum that wrapped around is below either addend.
        const Bytes saturated = sum | (Bytes)(sum < over);
        memcpy(pixels + i, &saturated, sizeof saturated);
    }
}

QZ_INLINE uint8_t united(uint8_t a, uint8_t b) {
    const uint32_t rounded = (255u - a) * (255u - b) + 128u;
    return static_cast<uint8_t>(255 - ((rounded + (rounded >> 8)) >> 8));
}

QZ_INLINE Bytes repeated(const uint8_t* pixel) {
    // Spread in a register: a vector loaded from parts just written would stall on them.
    uint32_t number;
    memcpy(&number, pixel, sizeof number);
    return (Bytes)(Pixels{} + number);
}

// Separate from the loop, which would need more registers and stack otherwise.
[[gnu::noinline]] void blendLastPixels(const uint8_t* coverage, size_t width, const uint8_t* opaque, uint8_t alpha,
                                       uint8_t* pixels) {
    uint8_t wholeCoverage[kBlock] = {}, wholePixels[kBlockBytes] = {};
    memcpy(wholeCoverage, coverage, width);
    if (fillOf(wholeCoverage) == Fill::none) return;
    memcpy(wholePixels, pixels, 4 * width);
    blendBlock(wholeCoverage, repeated(opaque), alpha, wholePixels);
    memcpy(pixels, wholePixels, 4 * width);
}

QZ_INLINE void blendCoverage(const CoverageRows& rows, const uint8_t* opaque, uint8_t alpha) {
    const Bytes color = repeated(opaque);
    const size_t whole = rows.width / kBlock * kBlock, rest = rows.width - whole;
    const uint8_t* coverage = rows.coverage;
    uint8_t* pixels = rows.pixels;
    for (size_t y = 0; y < rows.height; ++y, coverage += rows.coverageStride, pixels += rows.pixelStride) {
        for (size_t x = 0; x < whole; x += kBlock) {
            const Fill fill = fillOf(coverage + x);
            if (fill == Fill::none) continue;
            if (fill == Fill::whole && alpha == 255) {
                for (size_t i = 0; i < kBlockBytes; i += kVectorBytes) memcpy(pixels + 4 * x + i, &color, sizeof color);
            } else {
                blendBlock(coverage + x, color, alpha, pixels + 4 * x);
            }
        }
        if (rest != 0) blendLastPixels(coverage + whole, rest, opaque, alpha, pixels + 4 * whole);
    }
}

QZ_INLINE void blendPixels(const uint8_t* source, size_t width, uint8_t alpha, uint8_t* pixels) {
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
        uint64_t words[kBlockBytes / 8], any = 0;
        memcpy(words, source + 4 * x, sizeof words);
        for (const uint64_t word : words) any |= word;
        if (any != 0) blendPixelBlock(source + 4 * x, alpha, pixels + 4 * x);
    }
    if (x == width) return;
    uint8_t lastSource[kBlockBytes] = {}, lastPixels[kBlockBytes] = {};
    memcpy(lastSource, source + 4 * x, 4 * (width - x));
    memcpy(lastPixels, pixels + 4 * x, 4 * (width - x));
    blendPixelBlock(lastSource, alpha, lastPixels);
    memcpy(pixels + 4 * x, lastPixels, 4 * (width - x));
}

QZ_INLINE void uniteCoverage(const uint8_t* coverage, size_t width, uint8_t* target) {
    size_t x = 0;
    for (; x + kVectorBytes <= width; x += kVectorBytes) {
        const Bytes sum = ~product<Words>(~loaded(coverage + x), ~loaded(target + x));
        memcpy(target + x, &sum, sizeof sum);
    }
    for (; x < width; ++x) target[x] = united(coverage[x], target[x]);
}

#undef QZ_INLINE

}  // namespace
}  // namespace qz
