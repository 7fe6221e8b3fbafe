#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <sys/resource.h>

#include "QzAnno_AnnotatedTextFramework/render/QzRasterStrokeFilter.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::LogCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Ref<NSBitmapImageRep> bitmapOf(int32_t width, int32_t height, int32_t bytesPerRow = 0) {
    return NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = width, .pixelsHigh = height, .bytesPerRow = bytesPerRow});
}

uint32_t pixelAt(const NSBitmapImageRep& bitmap, int32_t x, int32_t y) {
    uint32_t pixel;
    std::memcpy(&pixel, bitmap.row(y) + 4 * x, sizeof pixel);
    return pixel;
}

void setPixel(NSBitmapImageRep& bitmap, int32_t x, int32_t y, uint32_t pixel) {
    std::memcpy(bitmap.row(y) + 4 * x, &pixel, sizeof pixel);
}

std::vector<uint8_t> bytesOf(const NSBitmapImageRep& bitmap) {
    return {bitmap.row(0), bitmap.row(bitmap.pixelsHigh())};
}

TEST(RasterStroke, OrsTheOldValueAndDropsTheOtherChannels) {
    const auto bitmap = bitmapOf(40, 3);
    setPixel(*bitmap, 20, 1, 0xAABBCC0F);
    setPixel(*bitmap, 21, 1, 0x11223310);
    rasterStrokeWithSize(*bitmap, 1);
    EXPECT_EQ(pixelAt(*bitmap, 20, 1), 0x1Fu) << "not the maximum, 0x10";
    EXPECT_EQ(pixelAt(*bitmap, 21, 1), 0x10u);
    EXPECT_EQ(pixelAt(*bitmap, 19, 0), 0x0Fu);
    EXPECT_EQ(pixelAt(*bitmap, 22, 2), 0x10u);
    EXPECT_EQ(pixelAt(*bitmap, 23, 1), 0u);
}

TEST(RasterStroke, LeavesBytesBesideTheRowsAlone) {
    const auto bitmap = bitmapOf(100, 4, 402);
    std::memset(bitmap->bitmapData(), 0xEE, 402 * 4);
    rasterStrokeWithSize(*bitmap, 3);
    for (int32_t y = 0; y < 4; ++y) {
        EXPECT_EQ(pixelAt(*bitmap, 99, y), 0xEEu);
        EXPECT_EQ(bitmap->row(y)[400], 0xEE);
        EXPECT_EQ(bitmap->row(y)[401], 0xEE);
    }
}

TEST(RasterStroke, RefusesWithOneLineAndAnUnchangedBitmap) {
    struct Case {
        const char* why;
        NSBitmapImageRep::Format format;
        NSSize size;
        int32_t stroke;
        const char* line;
    };
    const float inf = std::numeric_limits<float>::infinity();
    const Case cases[] = {
        {"24 bits a pixel",
         {.samplesPerPixel = 3, .hasAlpha = false},
         {6, 4},
         1,
         "ERROR! 24 bits per pixel in rasterStrokeImageRep!\n"},
        {"64 bits a pixel", {.bitsPerSample = 16}, {6, 4}, 1, "ERROR! 64 bits per pixel in rasterStrokeImageRep!\n"},
        {"a negative kernel", {}, {6, 4}, -1, "ERROR: vImageMax_Planar8 returned badly\n"},
        {"the least stroke", {}, {6, 4}, INT32_MIN, "ERROR: vImageMax_Planar8 returned badly\n"},
        {"half the points", {}, {3, 2}, 1, "6 x 4 pixels has a size of {3, 2} points"},
        {"more points than pixels", {}, {6, 5}, 1, "6 x 4 pixels has a size of {6, 5} points"},
        {"a negative size counts as 0", {}, {-6, 4}, 1, "6 x 4 pixels has a size of {-6, 4} points"},
        {"no number", {}, {NAN, 4}, 1, "6 x 4 pixels"},
        {"planes of 4 GiB", {}, {65536, 65536}, 1, "too large"},
        {"row bytes beyond 32 bits", {}, {inf, 1}, 1, "too large"},
    };
    for (Case c : cases) {
        SCOPED_TRACE(c.why);
        c.format.pixelsWide = 6;
        c.format.pixelsHigh = 4;
        const auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, c.format);
        bitmap->setSize(c.size);
        std::memset(bitmap->bitmapData(), 0x5A, static_cast<size_t>(bitmap->bytesPerRow()) * 4);
        const std::vector<uint8_t> before = bytesOf(*bitmap);
        const LogCapture log;
        rasterStrokeWithSize(*bitmap, c.stroke);
        EXPECT_THAT(log.lines(), ElementsAre(HasSubstr(c.line)));
        EXPECT_THAT(log.errors(), IsEmpty());
        EXPECT_EQ(bytesOf(*bitmap), before);
    }
}

TEST(RasterStroke, ReportsMissingMemoryAsAnAssertion) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's allocator ends the process instead";
#endif
    const auto strokeWithoutMemory = [] {
        const rlimit oneGiB = {1 << 30, 1 << 30};
        setrlimit(RLIMIT_AS, &oneGiB);
        const auto bitmap = bitmapOf(6, 4);
        bitmap->setSize({40000, 40000});
        rasterStrokeWithSize(*bitmap, 1);
        std::exit(0);
    };
    EXPECT_EXIT(strokeWithoutMemory(), testing::ExitedWithCode(0),
                "^QzAnno_AnnotatedTextFramework/QzRasterStrokeFilter:43: failed assertion `result->data != NULL'\n$");
}

TEST(RasterStroke, CountsWholePixelsOfASizeInFractions) {
    const auto bitmap = bitmapOf(6, 4);
    bitmap->setSize({6.7f, 4.2f});
    setPixel(*bitmap, 0, 0, 0xff);
    rasterStrokeWithSize(*bitmap, INT32_MAX);
    EXPECT_EQ(pixelAt(*bitmap, 5, 3), 0xffu);
}

}  // namespace
}  // namespace qz
