#include <algorithm>
#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "platform/graphics/Compositing.h"
#include "platform/graphics/PixelRows.h"

namespace qz {
namespace {

// Odd rows: 100 pixels of four bytes and two bytes of padding, so pixels lie on no word boundary.
constexpr int32_t kWidth = 100, kHeight = 5, kRowBytes = 402;
constexpr uint8_t kPadding = 0xA5;

struct OddRows {
    std::vector<uint8_t> bytes = std::vector<uint8_t>(kRowBytes * kHeight, kPadding);
    Ref<NSBitmapImageRep> bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(
        bytes.data(), {.pixelsWide = kWidth, .pixelsHigh = kHeight, .bytesPerRow = kRowBytes});

    OddRows() {
        for (int32_t y = 0; y < kHeight; ++y) std::fill_n(bitmap->row(y), 4 * kWidth, uint8_t{0});
    }
    bool isPaddingWhole() const {
        for (int32_t y = 0; y < kHeight; ++y) {
            if (bitmap->row(y)[400] != kPadding || bitmap->row(y)[401] != kPadding) return false;
        }
        return true;
    }
};

CoverageMask maskOf(PixelRect box, uint8_t coverage) {
    CoverageMask mask = CoverageMask::emptyOf(box);
    for (int32_t y = 0; y < box.height; ++y) std::fill_n(mask.row(y), box.width, coverage);
    return mask;
}

Ref<NSBitmapImageRep> bitmapOf(int32_t width, int32_t height = 1) {
    return NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = width, .pixelsHigh = height});
}

// The mixing of one component, written to be read: the loops are vector code.
int scalarMix(int color, int old, int weight) {
    return static_cast<int>(std::lround((color * weight + old * (255 - weight)) / 255.0));
}

// Every alpha with every coverage: what the scalar form gives, within 1 of the exact result and nearest to it for an
// opaque colour, and colour that stays within alpha.
TEST(Compositing, BlendedMaskIsWhatTheScalarFormGivesForAllAlphasAndCoverages) {
    CoverageMask ramp = maskOf({0, 0, 256, 1}, 0);
    std::iota(ramp.bytes.begin(), ramp.bytes.end(), uint8_t{0});
    const auto target = bitmapOf(256);
    double worst = 0, worstOpaque = 0;
    for (const int old : {0, 1, 77, 128, 200, 254, 255}) {
        for (int alpha = 0; alpha < 256; ++alpha) {
            const uint8_t oldPixel[] = {0, uint8_t(old / 2), uint8_t(old), uint8_t(old)};
            for (int x = 0; x < 256; ++x) std::copy_n(oldPixel, 4, target->row(0) + 4 * x);
            blendMask(ramp, {255, 100, 3, uint8_t(alpha)}, *target);
            for (int x = 0; x < 256; ++x) {
                const double weight = alpha / 255.0 * x / 255.0;
                const int colors[] = {255, 100, 3, 255};
                for (int i = 0; i < 4; ++i) {
                    const int drawn = target->row(0)[4 * x + i];
                    ASSERT_EQ(drawn, scalarMix(colors[i], oldPixel[i], scalarMix(alpha, 0, x)))
                        << "alpha " << alpha << " coverage " << x << " on " << int{oldPixel[i]};
                    const double exact = colors[i] * weight + oldPixel[i] * (1 - weight);
                    worst = std::max(worst, std::fabs(exact - drawn));
                    if (alpha == 255) worstOpaque = std::max(worstOpaque, std::fabs(exact - drawn));
                }
                const uint8_t* const pixel = target->row(0) + 4 * x;
                ASSERT_LE(std::max({pixel[0], pixel[1], pixel[2]}), pixel[3]) << "alpha " << alpha << " coverage " << x;
            }
        }
    }
    EXPECT_LE(worst, 1 + 1e-9);
    EXPECT_LE(worstOpaque, 0.5 + 1e-9);
}

// The loops for each width of registers, at every length and start within a vector: one pixel beyond stays as it was.
TEST(Compositing, AllLoopsOfThisMachineDoTheSame) {
    constexpr uint8_t kOpaque[] = {200, 100, 3, 255};
    constexpr size_t kLength = 70;
    for (const PixelRows* rows : pixelRowsOfThisMachine()) {
        SCOPED_TRACE(rows->name);
        for (size_t length = 0; length < kLength; ++length) {
            for (const uint8_t alpha : {uint8_t{255}, uint8_t{77}}) {
                std::vector<uint8_t> coverage(kLength), source(4 * kLength), pixels(4 * kLength), united(kLength);
                for (size_t i = 0; i < 4 * kLength; ++i) pixels[i] = source[i] = uint8_t(i * 31 % 256);
                for (size_t i = 0; i < kLength; ++i) {
                    coverage[i] = i % 23 < 9 ? 255 : i % 23 < 18 ? 0 : uint8_t(i * 57 % 256);
                    united[i] = uint8_t(i * 13 % 256);
                }
                const auto oldPixels = pixels, oldUnited = united;
                rows->blendCoverage({coverage.data(), 0, pixels.data(), 0, length, 1}, kOpaque, alpha);
                rows->uniteCoverage(coverage.data(), length, united.data());
                for (size_t i = 0; i < 4 * kLength; ++i) {
                    const int weight = i / 4 < length ? scalarMix(alpha, 0, coverage[i / 4]) : 0;
                    ASSERT_EQ(pixels[i], scalarMix(kOpaque[i % 4], oldPixels[i], weight)) << i << " of " << length;
                }
                for (size_t i = 0; i < kLength; ++i) {
                    ASSERT_EQ(united[i], i < length ? scalarMix(255, oldUnited[i], coverage[i]) : oldUnited[i]);
                }
                // The same pixels as two rows.
                const size_t half = length / 2;
                auto folded = oldPixels;
                rows->blendCoverage({coverage.data(), half, folded.data(), 4 * half, half, 2}, kOpaque, alpha);
                ASSERT_TRUE(std::equal(folded.begin(), folded.begin() + 8 * half, pixels.begin())) << length;
                pixels = oldPixels;
                rows->blendPixels(source.data(), length, alpha, pixels.data());
                for (size_t i = 0; i < 4 * kLength; ++i) {
                    const int over = scalarMix(source[i], 0, alpha), overAlpha = scalarMix(source[i | 3], 0, alpha);
                    const int sum = std::min(255, over + scalarMix(oldPixels[i], 0, 255 - overAlpha));
                    ASSERT_EQ(pixels[i], i / 4 < length ? sum : oldPixels[i]) << i << " of " << length;
                }
            }
        }
    }
}

// Between the ends that the loops of all machines are held against: where it lies, and what it is thinned by.
TEST(Compositing, MasksAndBitmapsLieWhereTheyAreMovedTo) {
    const CoverageMask mask = maskOf({0, 0, 2, 1}, 51);
    CoverageMask target = maskOf({9, 5, 4, 2}, 100);
    EXPECT_EQ(uniteMasks(mask, 10, 6, target), (PixelRect{10, 6, 2, 1}));
    EXPECT_EQ(std::vector(target.row(1), target.row(1) + 4), (std::vector<uint8_t>{100, 131, 131, 100}));
    EXPECT_EQ(target.row(0)[1], 100);
    const auto source = bitmapOf(1), under = bitmapOf(2);
    std::fill_n(source->row(0), 4, uint8_t{200});
    std::fill_n(under->row(0), 8, uint8_t{77});
    blendBitmap(*source, 1, 0, *under, 128);
    // 200 thinned by 128 is 100; of 77 stay 155 parts of 255.
    EXPECT_EQ(std::vector(under->row(0) + 3, under->row(0) + 5), (std::vector<uint8_t>{77, 147}));
    const uint8_t impossible[] = {255, 255, 255, 0};  // as a filter may leave it: must saturate, not wrap
    std::copy_n(impossible, 4, source->row(0));
    blendBitmap(*source, 0, 0, *under);
    EXPECT_EQ(under->row(0)[0], 255);
}

TEST(Compositing, WhatHangsOverAnyEdgeIsCutAndPaddingIsNeverWritten) {
    const struct {
        PixelRect box;
        int pixels;
        const char* reason;
    } cases[] = {
        {{-3, -2, 10, 4}, 7 * 2, "over the top left corner"},
        {{95, 3, 20, 9}, 5 * 2, "over the bottom right corner, where padding lies"},
        {{-50, -50, 300, 300}, 500, "larger than the target"},
        {{100, 0, 5, 5}, 0, "just right of it"},
        {{0, -5, 5, 5}, 0, "just above it"},
        {{INT32_MAX - 2, INT32_MAX - 2, 5, 5}, 0, "edges beyond 32 bits"},
        {{INT32_MIN, INT32_MIN, 5, 5}, 0, "far to the left"},
    };
    for (const auto& c : cases) {
        OddRows masked, placed, copied;
        blendMask(maskOf(c.box, 255), {255, 255, 255, 255}, *masked.bitmap);
        EXPECT_EQ(std::ranges::count(masked.bytes, 255), 4 * c.pixels) << c.reason;
        // Coverage that tells its place, so that a wrong corner of the mask or of the bitmap shows.
        CoverageMask mask = maskOf(c.box, 0);
        const auto source = bitmapOf(c.box.width, c.box.height);
        for (int32_t y = 0; y < c.box.height; ++y) {
            for (int32_t x = 0; x < c.box.width; ++x) {
                const auto value = uint8_t((x * 7 + y * 31) % 256);
                mask.bytes[size_t(y * mask.stride + x)] = value;
                std::fill_n(source->row(y) + 4 * x, 4, value);
            }
        }
        blendMask(mask, {255, 255, 255, 255}, *placed.bitmap);
        blendBitmap(*source, c.box.x, c.box.y, *copied.bitmap);
        EXPECT_EQ(placed.bytes, copied.bytes) << c.reason;
        EXPECT_TRUE(masked.isPaddingWhole()) << c.reason;
    }
}

}  // namespace
}  // namespace qz
