#include "platform/graphics/PixelRows.h"

#include <algorithm>
#include <cstring>

// Sanitizers start too late for the choice that is made while the program is loaded.
#if defined(__x86_64__) && defined(__ELF__) && !defined(__SANITIZE_ADDRESS__) && !defined(QZANNO_NO_CLONES) && \
    __has_attribute(target_clones)
#define QZ_WIDE_REGISTERS __attribute__((target_clones("avx2", "default")))
#else
#define QZ_WIDE_REGISTERS
#endif

namespace qz {
namespace {

// Pixels that go at once.
constexpr size_t kBlock = 16;
constexpr size_t kBlockBytes = 4 * kBlock;

enum class Fill { none, whole, mixed };

[[gnu::always_inline]] inline Fill fillOf(const uint8_t* coverage) {
    uint64_t words[2];
    std::memcpy(words, coverage, sizeof words);
    if ((words[0] | words[1]) == 0) return Fill::none;
    return (words[0] & words[1]) == UINT64_MAX ? Fill::whole : Fill::mixed;
}

// Vectors as GCC and Clang both write them, on any machine; those with registers of this size have one instruction for
// most of what follows.
using Bytes = uint8_t __attribute__((vector_size(16)));
using Words = uint16_t __attribute__((vector_size(16)));
using Pixels = uint32_t __attribute__((vector_size(16)));

[[gnu::always_inline]] inline Bytes loaded(const uint8_t* bytes) {
    Bytes vector;
    std::memcpy(&vector, bytes, sizeof vector);
    return vector;
}

[[gnu::always_inline]] inline Words lowHalf(Bytes v) {
    return (Words)__builtin_shufflevector(v, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

[[gnu::always_inline]] inline Words highHalf(Bytes v) {
    return (Words)__builtin_shufflevector(v, Bytes{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}

// Of words that are all below 256.
[[gnu::always_inline]] inline Bytes joined(Words low, Words high) {
    return __builtin_shufflevector((Bytes)low, (Bytes)high, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}

[[gnu::always_inline]] inline Words by255(Words a) {
    const Words rounded = a + uint16_t{128};
    return (rounded + (rounded >> 8)) >> 8;
}

[[gnu::always_inline]] inline Bytes product(Bytes a, Bytes b) {
    return joined(by255(lowHalf(a) * lowHalf(b)), by255(highHalf(a) * highHalf(b)));
}

[[gnu::always_inline]] inline Bytes mixed(Bytes a, Bytes b, Bytes weight) {
    const Bytes rest = ~weight;
    return joined(by255(lowHalf(a) * lowHalf(weight) + lowHalf(b) * lowHalf(rest)),
                  by255(highHalf(a) * highHalf(weight) + highHalf(b) * highHalf(rest)));
}

[[gnu::always_inline]] inline Bytes all(uint8_t value) {
    return Bytes{} + value;
}

[[gnu::always_inline]] inline void mixInto(uint8_t* pixels, Bytes color, Bytes weight) {
    const Bytes result = mixed(color, loaded(pixels), weight);
    std::memcpy(pixels, &result, sizeof result);
}

[[gnu::always_inline]] inline void blendBlock(const uint8_t* coverage, const uint8_t* opaque, uint8_t alpha,
                                              uint8_t* pixels) {
    Bytes w = loaded(coverage);
    if (alpha != 255) w = product(w, all(alpha));
    const Bytes color = loaded(opaque);
    const Words first = (Words)__builtin_shufflevector(w, w, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const Words last =
        (Words)__builtin_shufflevector(w, w, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    mixInto(pixels, color, (Bytes)__builtin_shufflevector(first, first, 0, 8, 1, 9, 2, 10, 3, 11));
    mixInto(pixels + 16, color, (Bytes)__builtin_shufflevector(first, first, 4, 12, 5, 13, 6, 14, 7, 15));
    mixInto(pixels + 32, color, (Bytes)__builtin_shufflevector(last, last, 0, 8, 1, 9, 2, 10, 3, 11));
    mixInto(pixels + 48, color, (Bytes)__builtin_shufflevector(last, last, 4, 12, 5, 13, 6, 14, 7, 15));
}

[[gnu::always_inline]] inline void blendPixelBlock(const uint8_t* source, uint8_t alpha, uint8_t* pixels) {
    for (size_t i = 0; i < kBlockBytes; i += sizeof(Bytes)) {
        Bytes over = loaded(source + i);
        if (alpha != 255) over = product(over, all(alpha));
        const Pixels high = (Pixels)over & 0xFF000000u;  // alpha is the last of four bytes, on a little-endian machine
        const Pixels two = high | high >> 8;
        const Bytes kept = product(loaded(pixels + i), ~(Bytes)(two | two >> 16));
        const Bytes sum = over + kept;
        // A sum that wrapped around is below either part.
        const Bytes saturated = sum | (Bytes)(sum < over);
        std::memcpy(pixels + i, &saturated, sizeof saturated);
    }
}

[[gnu::always_inline]] inline void uniteBlock(const uint8_t* coverage, uint8_t* target) {
    const Bytes united = ~product(~loaded(coverage), ~loaded(target));
    std::memcpy(target, &united, sizeof united);
}

}  // namespace

QZ_WIDE_REGISTERS
void blendCoverageRow(const uint8_t* coverage, size_t width, const uint8_t (&opaque)[4], uint8_t alpha,
                      uint8_t* pixels) {
    uint8_t colors[kBlockBytes];
    for (size_t i = 0; i < kBlock; ++i) std::memcpy(colors + 4 * i, opaque, 4);
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
        const Fill fill = fillOf(coverage + x);
        if (fill == Fill::none) continue;
        if (fill == Fill::whole && alpha == 255) {
            std::memcpy(pixels + 4 * x, colors, kBlockBytes);
        } else {
            blendBlock(coverage + x, colors, alpha, pixels + 4 * x);
        }
    }
    if (x == width) return;
    uint8_t lastCoverage[kBlock] = {}, lastPixels[kBlockBytes] = {};
    std::memcpy(lastCoverage, coverage + x, width - x);
    if (fillOf(lastCoverage) == Fill::none) return;
    std::memcpy(lastPixels, pixels + 4 * x, 4 * (width - x));
    blendBlock(lastCoverage, colors, alpha, lastPixels);
    std::memcpy(pixels + 4 * x, lastPixels, 4 * (width - x));
}

QZ_WIDE_REGISTERS
void blendPixelRow(const uint8_t* source, size_t width, uint8_t alpha, uint8_t* pixels) {
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
        uint64_t words[kBlockBytes / 8], any = 0;
        std::memcpy(words, source + 4 * x, sizeof words);
        for (const uint64_t word : words) any |= word;
        if (any != 0) blendPixelBlock(source + 4 * x, alpha, pixels + 4 * x);
    }
    if (x == width) return;
    uint8_t lastSource[kBlockBytes] = {}, lastPixels[kBlockBytes] = {};
    std::memcpy(lastSource, source + 4 * x, 4 * (width - x));
    std::memcpy(lastPixels, pixels + 4 * x, 4 * (width - x));
    blendPixelBlock(lastSource, alpha, lastPixels);
    std::memcpy(pixels + 4 * x, lastPixels, 4 * (width - x));
}

QZ_WIDE_REGISTERS
void uniteCoverageRow(const uint8_t* coverage, size_t width, uint8_t* target) {
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) uniteBlock(coverage + x, target + x);
    for (; x < width; ++x)
        target[x] = static_cast<uint8_t>(255 - dividedBy255((255u - coverage[x]) * (255u - target[x])));
}

}  // namespace qz
