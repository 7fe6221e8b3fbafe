#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "fuzz/PixelsCheck.h"
#include "platform/graphics/Compositing.h"
#include "tests/support/RandomChoices.h"

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

TEST(Compositing, AllLoopsOfThisMachineDoAsTheyAreDefined) {
    for (uint32_t seed = 1; seed <= 100; ++seed) {
        test::RandomChoices choices(seed);
        fuzz::PixelsCheck check(choices);
        for (size_t width = 0; width < 70; ++width) check.checkRows(width);
    }
}

// Placement and opacity.
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
    // 200 at opacity 128 is 100; 155/255 of 77 remain.
    EXPECT_EQ(std::vector(under->row(0) + 3, under->row(0) + 5), (std::vector<uint8_t>{77, 147}));
    const uint8_t impossible[] = {255, 255, 255, 0};  // as a filter may produce: must saturate, not wrap
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
        // Coverage that depends on the position, to detect a wrong corner of the mask or bitmap.
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

TEST(vImageMax, IsTheGreatestSampleUnderTheKernel) {
    struct Case {
        uint32_t width, height;
        int64_t reachX, reachY;
        const char* why;
    };
    const Case cases[] = {
        {1, 1, 0, 0, "the smallest plane"},
        {1, 1, 7, 7, "the kernel reaches beyond a plane of one sample"},
        {61, 1, 3, 9, "one row"},
        {1, 40, 9, 3, "one column"},
        {67, 23, 0, 0, "no stroke"},
        {67, 23, 1, 1, "three rows, read directly"},
        {67, 23, 2, 2, "five rows, read directly"},
        {67, 23, 3, 3, "blocks of seven rows, the last one cut"},
        {130, 49, 4, 24, "one block of rows, less than the plane"},
        {130, 49, 13, 0, "windows of 27, three times 9"},
        {130, 49, 14, 5, "windows of 29, one more pass"},
        {130, 49, 129, 48, "from edge to edge"},
        {130, 49, INT64_MAX / 2, INT64_MAX / 2, "the largest kernel"},
        {4100, 9, 2, 2, "two strips"},
        {4099, 9, 40, 3, "strips of unequal width"},
        {9000, 3, 600, 1, "strips widened for a wide kernel"},
    };
    const uint32_t seed = std::random_device()();
    test::RandomChoices choices(seed);
    for (const auto& [width, height, reachX, reachY, why] : cases) {
        SCOPED_TRACE(why);
        for (int round = 0; round < 4; ++round) fuzz::PixelsCheck(choices).checkMaximum(width, height, reachX, reachY);
    }
}

TEST(vImageMax, RefusesWhatHasNoCentreOrNoRoom) {
    std::vector<uint8_t> source(200), destination(200, 7);
    const auto resultOf = [&](int64_t kernelHeight, int64_t kernelWidth, vImage_Buffer from) {
        return vImageMax_Planar8(from, {destination.data(), 10, 20, 20}, kernelHeight, kernelWidth);
    };
    for (const int64_t side : {int64_t{0}, int64_t{2}, int64_t{-1}, int64_t{-3}, INT64_MIN}) {
        EXPECT_EQ(resultOf(side, 3, {source.data(), 10, 20, 20}), vImage_Error::invalidKernelSize);
        EXPECT_EQ(resultOf(3, side, {source.data(), 10, 20, 20}), vImage_Error::invalidKernelSize);
    }
    EXPECT_EQ(resultOf(3, 3, {source.data(), 9, 20, 20}), vImage_Error::invalidBuffer);
    EXPECT_EQ(resultOf(3, 3, {source.data(), 10, 20, 19}), vImage_Error::invalidBuffer);
    EXPECT_EQ(destination, std::vector<uint8_t>(200, 7));
}

}  // namespace
}  // namespace qz
