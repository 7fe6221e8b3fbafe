#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/graphics/PixelRows.h"
#include "platform/graphics/vImageMax_Planar8.h"

namespace qz::fuzz {

/// Checks the pixel loops, at each register width the machine has, and the maximum filter against their definitions,
/// sample by sample. The bytes after the last sample of a row must not change.
template <class Choices>
class PixelsCheck {
public:
    explicit PixelsCheck(Choices& choices) : choices_(choices) {}

    void checkRows(size_t width) {
        const auto alpha = choices_.template ConsumeIntegral<uint8_t>();
        Bytes opaque = bytes(4);
        opaque[3] = 255;
        const Bytes coverage = bytes(width), united = bytes(width + 1);
        const Bytes pixels = premultiplied(width + 1), source = premultiplied(width);
        for (const PixelRows* rows : pixelRowsOfThisMachine()) {
            Bytes blended = pixels, folded = pixels, laid = pixels, covered = united;
            rows->blendCoverage({coverage.data(), 0, blended.data(), 0, width, 1}, opaque.data(), alpha);
            rows->blendPixels(source.data(), width, alpha, laid.data());
            rows->uniteCoverage(coverage.data(), width, covered.data());
            for (size_t i = 0; i < 4 * width; ++i) {
                require(blended[i] == mix(opaque[i % 4], pixels[i], mix(alpha, 0, coverage[i / 4])),
                        "colour by coverage");
                const int thinned = mix(source[i], 0, alpha), kept = 255 - mix(source[i | 3], 0, alpha);
                require(laid[i] == std::min(255, thinned + mix(pixels[i], 0, kept)), "pixels over pixels");
                require(blended[i] <= blended[i | 3] && laid[i] <= laid[i | 3], "pixels stay premultiplied");
            }
            for (size_t i = 0; i < width; ++i)
                require(covered[i] == mix(255, united[i], coverage[i]), "coverage united");
            const auto isSameBehind = [](const Bytes& a, const Bytes& b, size_t from) {
                return std::equal(a.begin() + static_cast<std::ptrdiff_t>(from), a.end(),
                                  b.begin() + static_cast<std::ptrdiff_t>(from));
            };
            require(isSameBehind(blended, pixels, 4 * width) && isSameBehind(laid, pixels, 4 * width) &&
                        isSameBehind(covered, united, width),
                    "nothing is written behind a row");
            const size_t half = width / 2;
            rows->blendCoverage({coverage.data(), half, folded.data(), 4 * half, half, 2}, opaque.data(), alpha);
            require(
                std::equal(blended.begin(), blended.begin() + static_cast<std::ptrdiff_t>(8 * half), folded.begin()),
                "two rows are drawn as one");
        }
    }

    void checkMaximum(uint32_t width, uint32_t height, int64_t reachX, int64_t reachY) {
        constexpr uint32_t kBeside = 5;
        const uint32_t rowBytes = width + kBeside;
        // No padding after the last row, so that a read or write past it leaves the storage.
        Bytes source(size_t{height} * rowBytes - kBeside), found(source.size(), 0xA5);
        // Few samples are set; otherwise the maximum would be the same everywhere.
        const auto gap = choices_.template ConsumeIntegralInRange<size_t>(1, 300);
        for (size_t i = 0; i < source.size(); i += choices_.template ConsumeIntegralInRange<size_t>(1, gap))
            source[i] = choices_.template ConsumeIntegral<uint8_t>();
        require(vImageMax_Planar8({source.data(), height, width, rowBytes}, {found.data(), height, width, rowBytes},
                                  2 * reachY + 1, 2 * reachX + 1) == vImage_Error::noError,
                "the filter runs");
        reachX = std::min<int64_t>(reachX, width);
        reachY = std::min<int64_t>(reachY, height);
        // Along the rows, then along the columns: the maximum of a rectangle is the maximum of its rows' maxima.
        Bytes along(source.size(), 0xA5), expected = along;
        const auto at = [&](int64_t x, int64_t y) { return static_cast<size_t>(y * rowBytes + x); };
        for (int64_t y = 0; y < height; ++y) {
            for (int64_t x = 0; x < width; ++x) {
                uint8_t& greatest = along[at(x, y)] = 0;
                for (int64_t u = std::max<int64_t>(0, x - reachX); u < std::min<int64_t>(width, x + reachX + 1); ++u)
                    greatest = std::max(greatest, source[at(u, y)]);
            }
        }
        for (int64_t y = 0; y < height; ++y) {
            for (int64_t x = 0; x < width; ++x) {
                uint8_t& greatest = expected[at(x, y)] = 0;
                for (int64_t v = std::max<int64_t>(0, y - reachY); v < std::min<int64_t>(height, y + reachY + 1); ++v)
                    greatest = std::max(greatest, along[at(x, v)]);
            }
        }
        require(found == expected, "the greatest sample under the kernel, and nothing beside the rows");
    }

private:
    using Bytes = std::vector<uint8_t>;

    /// Returns (a * weight + b * (255 - weight)) / 255, rounded to the nearest integer.
    static uint8_t mix(int a, int b, int weight) {
        return static_cast<uint8_t>((2 * (a * weight + b * (255 - weight)) + 255) / 510);
    }

    void require(bool holds, const char* what) { choices_.require(holds, what); }

    /// Returns runs of 0, of 255 and of arbitrary values: the loops have fast paths for the first two.
    Bytes bytes(size_t count) {
        Bytes found;
        while (found.size() < count) {
            const auto kind = choices_.template ConsumeIntegralInRange<int>(0, 2);
            const auto length = choices_.template ConsumeIntegralInRange<size_t>(1, 24);
            for (size_t i = 0; i < length && found.size() < count; ++i)
                found.push_back(kind == 0 ? 0 : kind == 1 ? 255 : choices_.template ConsumeIntegral<uint8_t>());
        }
        found.shrink_to_fit();
        return found;
    }
    Bytes premultiplied(size_t pixels) {
        Bytes found = bytes(4 * pixels);
        for (size_t i = 0; i < found.size(); ++i) found[i] = std::min(found[i], found[i | 3]);
        return found;
    }

    Choices& choices_;
};

}  // namespace qz::fuzz
