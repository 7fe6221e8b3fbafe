// The loops over pixels, at each width of registers that the machine has, and the maximum filter, against their
// definitions, sample by sample.
#include <algorithm>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/Fuzzing.h"
#include "platform/graphics/PixelRows.h"
#include "platform/graphics/vImageMax_Planar8.h"

namespace {

using namespace qz;
using fuzz::require;
using Bytes = std::vector<uint8_t>;

/// a by weight, b by the rest, of 255, to the nearest integer.
uint8_t mix(int a, int b, int weight) {
    return static_cast<uint8_t>((2 * (a * weight + b * (255 - weight)) + 255) / 510);
}

int times(int a, int b) {
    return mix(a, 0, b);
}

/// Exactly so many bytes in a block of their own, so that reading one more is seen; the input repeats when it is short.
Bytes bytesOf(FuzzedDataProvider& input, size_t count) {
    Bytes bytes = input.ConsumeBytes<uint8_t>(count);
    const size_t given = bytes.size();
    bytes.resize(count);
    for (size_t i = given; i < count; ++i) bytes[i] = given ? bytes[i % given] : 0xFF;
    bytes.shrink_to_fit();
    return bytes;
}

void makePremultiplied(Bytes& pixels) {
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = std::min(pixels[i], pixels[i | 3]);
}

void checkRows(FuzzedDataProvider& input) {
    const auto width = input.ConsumeIntegralInRange<size_t>(0, 80);
    const auto alpha = input.ConsumeIntegral<uint8_t>();
    Bytes opaque = bytesOf(input, 4);
    opaque[3] = 255;
    const Bytes coverage = bytesOf(input, width);
    const Bytes united = bytesOf(input, width);
    Bytes pixels = bytesOf(input, 4 * width), source = bytesOf(input, 4 * width);
    makePremultiplied(pixels);
    makePremultiplied(source);
    for (const PixelRows* rows : pixelRowsOfThisMachine()) {
        Bytes blended = pixels, laid = pixels, covered = united;
        rows->blendCoverage({coverage.data(), 0, blended.data(), 0, width, 1}, opaque.data(), alpha);
        rows->blendPixels(source.data(), width, alpha, laid.data());
        rows->uniteCoverage(coverage.data(), width, covered.data());
        for (size_t i = 0; i < 4 * width; ++i) {
            require(blended[i] == mix(opaque[i % 4], pixels[i], times(alpha, coverage[i / 4])), "colour by coverage");
            const int sum = times(source[i], alpha) + times(pixels[i], 255 - times(source[i | 3], alpha));
            require(laid[i] == std::min(sum, 255), "pixels over pixels");
            require(blended[i] <= blended[i | 3] && laid[i] <= laid[i | 3], "pixels stay premultiplied");
        }
        for (size_t i = 0; i < width; ++i) require(covered[i] == mix(255, united[i], coverage[i]), "coverage united");
    }
}

void checkMaximum(FuzzedDataProvider& input) {
    const auto width = input.ConsumeIntegralInRange<uint32_t>(1, 70);
    const auto height = input.ConsumeIntegralInRange<uint32_t>(1, 40);
    const int64_t reachX = input.ConsumeIntegralInRange<int>(0, 80), reachY = input.ConsumeIntegralInRange<int>(0, 50);
    Bytes source = bytesOf(input, size_t{width} * height), found(size_t{width} * height);
    require(vImageMax_Planar8({source.data(), height, width, width}, {found.data(), height, width, width},
                              2 * reachY + 1, 2 * reachX + 1) == vImage_Error::noError,
            "the filter runs");
    // First along the rows, then along the columns: the maximum of a rectangle is the maximum of its rows' maxima.
    Bytes along(source.size());
    for (int64_t y = 0; y < height; ++y) {
        for (int64_t x = 0; x < width; ++x) {
            const auto row = source.begin() + y * width;
            along[static_cast<size_t>(y * width + x)] = *std::max_element(
                row + std::max<int64_t>(0, x - reachX), row + std::min<int64_t>(width, x + reachX + 1));
        }
    }
    for (int64_t y = 0; y < height; ++y) {
        for (int64_t x = 0; x < width; ++x) {
            uint8_t greatest = 0;
            for (int64_t v = std::max<int64_t>(0, y - reachY); v < std::min<int64_t>(height, y + reachY + 1); ++v)
                greatest = std::max(greatest, along[static_cast<size_t>(v * width + x)]);
            require(found[static_cast<size_t>(y * width + x)] == greatest, "the greatest sample under the kernel");
        }
    }
}

void check(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        checkRows(input);
    } else {
        checkMaximum(input);
    }
}

}  // namespace

QZ_FUZZ(check)
