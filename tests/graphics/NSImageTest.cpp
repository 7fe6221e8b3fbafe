#include <algorithm>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>
#include <png.h>

#include "QzAnno/platform/graphics/NSImage.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

using Format = NSBitmapImageRep::Format;

TEST(NSBitmapImageRep, FillsInTheFormatAndStartsClearOrAsTheCallersBufferIs) {
    const auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = 100, .pixelsHigh = 3, .colorSpaceName = NSCalibratedRGBColorSpace, .bytesPerRow = 402});
    EXPECT_EQ(bitmap->bytesPerRow(), 402);
    EXPECT_EQ(bitmap->bitsPerPixel(), 32);
    EXPECT_EQ(std::count(bitmap->bitmapData(), bitmap->bitmapData() + 3 * 402, 0), 3 * 402);
    const auto odd = NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = 9, .pixelsHigh = 1, .bitsPerSample = 1, .samplesPerPixel = 1, .hasAlpha = false});
    EXPECT_EQ(odd->bytesPerRow(), 2) << "nine bits";
    std::vector<uint8_t> pixels(8, 7);
    EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(pixels.data(), {.pixelsWide = 2, .pixelsHigh = 1})->row(0),
              pixels.data());
    EXPECT_EQ(pixels, std::vector<uint8_t>(8, 7));
}

TEST(NSBitmapImageRep, RefusesWhatNoBitmapIs) {
    const struct {
        Format format;
        const char* reason;
    } cases[] = {
        {{.pixelsWide = 0, .pixelsHigh = 5}, "no width"},
        {{.pixelsWide = 5, .pixelsHigh = -1}, "negative height"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .isPlanar = true}, "planar"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bytesPerRow = 19}, "rows shorter than their pixels"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bytesPerRow = -20}, "negative row"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bitsPerPixel = 24}, "pixels shorter than their samples"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bitsPerSample = 7}, "seven bits"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .samplesPerPixel = 0}, "no samples"},
        {{.pixelsWide = INT32_MAX, .pixelsHigh = 1}, "row beyond 32 bits"},
    };
    uint8_t unused = 0;
    for (const auto& c : cases) {
        EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, c.format), nullptr) << c.reason;
        EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(&unused, c.format), nullptr) << c.reason;
    }
    for (const Format& tooLarge : {Format{.pixelsWide = 16384, .pixelsHigh = 16385},
                                   Format{.pixelsWide = 1, .pixelsHigh = INT32_MAX, .bytesPerRow = INT32_MAX}}) {
        EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, tooLarge), nullptr);
    }
    EXPECT_NE(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 16384, .pixelsHigh = 16384}), nullptr);
}

TEST(NSGraphicsContext, TakesOnlyRGBAOfEightBits) {
    const auto contextOf = [](const Format& format) {
        return NSGraphicsContext::graphicsContextWithBitmapImageRep(
            NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format), true);
    };
    EXPECT_NE(contextOf({.pixelsWide = 1, .pixelsHigh = 1}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 1, .pixelsHigh = 1, .samplesPerPixel = 3, .hasAlpha = false}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 1, .pixelsHigh = 1, .bitsPerSample = 16}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 1, .pixelsHigh = 1, .bitsPerPixel = 64}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 0, .pixelsHigh = 1}), nullptr);
}

TEST(NSImage, GivesFractionsAPixelAndRefusesImpossibleSizes) {
    const auto image = NSImage::initWithSize({100.7f, 20});
    EXPECT_EQ(image->size(), (NSSize{100.7f, 20}));
    EXPECT_EQ(image->bitmap()->pixelsWide(), 101);
    for (const NSSize size : {NSSize{0, 5}, {5, -1}, {NAN, 5}, {INFINITY, 5}, {5, 3e9f}, {1e6f, 1e6f}, {1e30f, 1}}) {
        EXPECT_EQ(NSImage::initWithSize(size), nullptr) << size.width << " x " << size.height;
    }
}

void fillTopLeftOfUserSpace() {
    NSBezierPath::bezierPathWithRect({{0, 0}, {1, 1}}).fill();
}

TEST(NSImage, FocusNestsBetweenImagesAndComesBack) {
    const auto outer = NSImage::initWithSize({4, 4}), inner = NSImage::initWithSize({4, 4});
    outer->setFlipped(true);
    outer->lockFocus();
    const auto outerContext = NSGraphicsContext::currentContext();
    inner->lockFocus();
    outer->unlockFocus();
    EXPECT_NE(NSGraphicsContext::currentContext(), outerContext) << "not the innermost lock: nothing happens";
    fillTopLeftOfUserSpace();
    inner->unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext(), outerContext);
    fillTopLeftOfUserSpace();
    outer->unlockFocus();
    outer->unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    EXPECT_EQ(outer->bitmap()->row(0)[3], 255) << "flipped: the origin is at the top";
    EXPECT_EQ(inner->bitmap()->row(3)[3], 255) << "not flipped: at the bottom";
}

TEST(NSImage, DrawsWholeIntoASmallerBitmap) {
    const auto image = NSImage::initWithSize({100.7f, 3});
    image->setFlipped(true);
    image->lockFocus();
    NSBezierPath::bezierPathWithRect({{0, 0}, {101, 3}}).fill();
    image->unlockFocus();
    const auto target =
        NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 100, .pixelsHigh = 3, .bytesPerRow = 402});
    const auto context = NSGraphicsContext::graphicsContextWithBitmapImageRep(target, true);
    const uint8_t* const pixels = target->bitmapData();
    target->row(0)[3] = 255;
    context->drawBitmap(*target, 1, 1);
    EXPECT_EQ(std::count(pixels, pixels + 3 * 402, 255), 1) << "not from the target into itself";
    context->drawBitmap(*image->bitmap(), 0, 0);
    EXPECT_EQ(std::count(pixels, pixels + 3 * 402, 255), 300);
    EXPECT_EQ(pixels[400] + pixels[401], 0);
}

Ref<NSBitmapImageRep> bitmapOf(int32_t width, int32_t height, int32_t bytesPerRow = 0) {
    return NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = width, .pixelsHigh = height, .bytesPerRow = bytesPerRow});
}

// Every colour with every alpha that it may have: 255 straight values pass through 8 bits and come back.
TEST(PNG, PremultipliedPixelsComeBackExactly) {
    const auto bitmap = bitmapOf(256, 256, 256 * 4 + 2);
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (int x = 0; x < 256; ++x) {
            const auto color = uint8_t(std::min(x, alpha));
            const uint8_t pixel[] = {color, uint8_t(alpha - color), uint8_t(color / 2), uint8_t(alpha)};
            std::copy_n(pixel, 4, bitmap->row(alpha) + 4 * x);
        }
    }
    std::string error;
    const auto read = bitmapFromPNG(*pngFromBitmap(*bitmap), &error);
    ASSERT_NE(read, nullptr) << error;
    for (int y = 0; y < 256; ++y) ASSERT_EQ(std::memcmp(read->row(y), bitmap->row(y), 1024), 0) << "alpha " << y;
}

TEST(PNG, WritesStraightAlphaAndRefusesOtherBitmaps) {
    const auto bitmap = bitmapOf(2, 1);
    const uint8_t pixels[] = {64, 0, 128, 128, /* impossible colour */ 9, 9, 9, 0};
    std::copy_n(pixels, 8, bitmap->row(0));
    const auto file = pngFromBitmap(*bitmap);
    // libpng's own simple reader as the referee.
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_memory(&image, file->bytes().data(), file->length()));
    image.format = PNG_FORMAT_RGBA;
    std::vector<uint8_t> straight(8);
    ASSERT_TRUE(png_image_finish_read(&image, nullptr, straight.data(), 0, nullptr));
    EXPECT_EQ(straight, (std::vector<uint8_t>{128, 0, 255, 128, 0, 0, 0, 0}));

    const auto wide =
        NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 2, .pixelsHigh = 1, .bitsPerSample = 16});
    EXPECT_EQ(pngFromBitmap(*wide), nullptr);
}

TEST(PNG, ReadsOtherKindsAsPremultipliedRGBA) {
    const uint8_t grey[] = {100, 255, 200, 51}, indexes[] = {0, 1}, colours[] = {10, 20, 30, 255, 200, 100, 50, 51};
    const uint16_t linear[] = {0xFFFF, 0, 0xFFFF, 0};
    const struct {
        uint32_t format;
        const void* row;
        std::vector<uint8_t> premultiplied;
        const char* reason;
    } kinds[] = {
        {PNG_FORMAT_GA, grey, {100, 100, 100, 255, 40, 40, 40, 51}, "grey, alpha"},
        {PNG_FORMAT_RGBA_COLORMAP, indexes, {10, 20, 30, 255, 40, 20, 10, 51}, "indexes of colours"},
        {PNG_FORMAT_LINEAR_Y, linear, {255, 255, 255, 255, 0, 0, 0, 255}, "16 bits of grey"},
    };
    for (const auto& kind : kinds) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = 2;
        image.height = 1;
        image.format = kind.format;
        image.colormap_entries = 2;
        std::vector<uint8_t> file(4096);
        png_alloc_size_t size = file.size();
        ASSERT_TRUE(png_image_write_to_memory(&image, file.data(), &size, 0, kind.row, 0, colours)) << image.message;
        file.resize(size);
        std::string error;
        const auto bitmap = bitmapFromPNG(*NSData::dataWithBytes(file), &error);
        ASSERT_NE(bitmap, nullptr) << kind.reason << ": " << error;
        EXPECT_EQ(std::vector(bitmap->row(0), bitmap->row(0) + 8), kind.premultiplied) << kind.reason;
    }
    const std::vector<uint8_t> interlaced = {
        // two greys, as a program of seven passes wrote them
        137, 80, 78, 71, 13,  10, 26,  10,  0,  0,   0,   13, 73, 72, 68, 82, 0,  0,  0,   2,   0,  0,  0,
        1,   8,  0,  0,  0,   1,  166, 78,  16, 192, 0,   0,  0,  12, 73, 68, 65, 84, 120, 156, 99, 72, 97,
        56,  1,  0,  1,  248, 1,  45,  247, 83, 220, 118, 0,  0,  0,  0,  73, 69, 78, 68,  174, 66, 96, 130};
    const auto bitmap = bitmapFromPNG(*NSData::dataWithBytes(interlaced), nullptr);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(std::vector(bitmap->row(0), bitmap->row(0) + 8),
              (std::vector<uint8_t>{100, 100, 100, 255, 200, 200, 200, 255}));
}

TEST(PNG, DamagedAndGiantFilesAreRefusedBeforeMemoryIsTaken) {
    const std::vector<uint8_t> whole = pngFromBitmap(*bitmapOf(5, 5))->bytes();
    std::vector<uint8_t> flipped = whole;
    flipped[whole.size() - 20] ^= 1;
    const auto sized = [&](uint32_t width, uint32_t height) {
        std::vector<uint8_t> file = whole;
        png_save_uint_32(file.data() + 16, width);
        png_save_uint_32(file.data() + 20, height);
        // The checksum of IHDR, from its type to its end, comes right after; zlib's table-free definition.
        uint32_t crc = 0xFFFFFFFF;
        for (size_t i = 12; i < 29; ++i) {
            crc ^= file[i];
            for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
        }
        png_save_uint_32(file.data() + 29, ~crc);
        return file;
    };
    const std::pair<std::vector<uint8_t>, const char*> cases[] = {
        {{}, "not a PNG file"},
        {{whole.begin(), whole.begin() + 7}, "not a PNG file"},
        {{whole.begin(), whole.begin() + 8}, "damaged PNG file (the file ends early)"},
        {{whole.begin(), whole.end() - 1}, "damaged PNG file (the file ends early)"},
        {flipped, "damaged PNG file"},
        {sized(0x7FFFFFFF, 0x7FFFFFFF), "PNG file"},
        {sized(16384, 16385), "16384 x 16385"},
    };
    for (const auto& [file, reason] : cases) {
        std::string error;
        EXPECT_EQ(bitmapFromPNG(*NSData::dataWithBytes(file), &error), nullptr);
        EXPECT_NE(error.find(reason), std::string::npos) << error << " for " << reason;
    }
    EXPECT_EQ(bitmapFromPNG(*NSData::data(), nullptr), nullptr);
}

}  // namespace
}  // namespace qz
