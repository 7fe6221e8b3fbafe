#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>
#include <png.h>

#include "QzAnno/platform/graphics/PNG.h"

namespace qz {
namespace {

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

void appendBytes(png_structp png, png_bytep bytes, size_t count) {
    auto& file = *static_cast<std::vector<uint8_t>*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

/// Two pixels in a row, of a kind that other programs write.
struct Kind {
    int colorType, depth;
    bool hasTransparency;
    std::vector<uint8_t> row;
    std::vector<uint8_t> premultiplied;
    const char* reason;

    std::vector<uint8_t> file(int interlace) const {
        std::vector<uint8_t> file, samples = row;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(png, &file, appendBytes, nullptr);
        png_set_IHDR(png, info, 2, 1, depth, colorType, interlace, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        const png_color palette[] = {{10, 20, 30}, {200, 100, 50}};
        const png_byte alphas[] = {255, 51};
        const png_color_16 transparent{0, 1, 1, 1, 1};
        if (colorType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 2);
        if (hasTransparency) png_set_tRNS(png, info, alphas, colorType == PNG_COLOR_TYPE_PALETTE ? 2 : 0, &transparent);
        png_bytep rows[] = {samples.data()};
        png_set_rows(png, info, rows);
        png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        png_destroy_write_struct(&png, &info);
        return file;
    }
};

TEST(PNG, ReadsOtherKindsAsPremultipliedRGBA) {
    const Kind kinds[] = {
        {PNG_COLOR_TYPE_GRAY, 2, true, {0b01'10'0000}, {0, 0, 0, 0, 170, 170, 170, 255}, "a grey that is transparent"},
        {PNG_COLOR_TYPE_PALETTE, 1, true, {0b01'000000}, {10, 20, 30, 255, 40, 20, 10, 51}, "indexes of colours"},
        {PNG_COLOR_TYPE_GRAY_ALPHA, 8, false, {100, 255, 200, 51}, {100, 100, 100, 255, 40, 40, 40, 51}, "grey, alpha"},
        {PNG_COLOR_TYPE_RGB,
         16,
         false,
         {0xFF, 0xFF, 0x80, 0, 0, 0x80, 0, 0, 1, 0x80, 0xFE, 0x80},
         {255, 128, 0, 255, 0, 1, 254, 255},
         "16 bits are rounded to 8"},
    };
    for (const Kind& kind : kinds) {
        for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
            std::string error;
            const auto bitmap = bitmapFromPNG(*NSData::dataWithBytes(kind.file(interlace)), &error);
            ASSERT_NE(bitmap, nullptr) << kind.reason << ": " << error;
            EXPECT_EQ(std::vector(bitmap->row(0), bitmap->row(0) + 8), kind.premultiplied) << kind.reason;
        }
    }
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
