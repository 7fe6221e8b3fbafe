#include <algorithm>
#include <cstring>
#include <random>

#include <gtest/gtest.h>
#include <png.h>

#include "platform/graphics/PNG.h"

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

constexpr int kSide = 19;  // reaches every pass of the interlace, and no whole byte of small samples

struct Kind {
    int colorType, depth;
    bool interlaced, hasTransparency;
};

/// A file of random samples of one kind, and the straight 8-bit RGBA that those samples mean.
struct Sample {
    std::vector<uint8_t> file;
    std::vector<double> straight;
};

void appendBytes(png_structp png, png_bytep bytes, size_t count) {
    auto& file = *static_cast<std::vector<uint8_t>*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

Sample sampleOf(const Kind& kind, unsigned seed) {
    std::mt19937 random(seed);
    const bool isPalette = kind.colorType == PNG_COLOR_TYPE_PALETTE;
    const int channels =
        isPalette ? 1
                  : (kind.colorType & PNG_COLOR_MASK_COLOR ? 3 : 1) + (kind.colorType & PNG_COLOR_MASK_ALPHA ? 1 : 0);
    const unsigned sampleMax = (1u << kind.depth) - 1;
    png_color palette[256];
    png_byte paletteAlpha[256];
    for (auto& entry : palette) entry = {png_byte(random()), png_byte(random()), png_byte(random())};
    for (auto& alpha : paletteAlpha) alpha = png_byte(random());
    const png_color_16 transparent{0, 1, 1, 1, 1};

    Sample sample;
    std::vector<std::vector<uint8_t>> rows(kSide, std::vector<uint8_t>(size_t(kSide * channels * kind.depth + 7) / 8));
    for (auto& row : rows) {
        for (int x = 0; x < kSide; ++x) {
            unsigned values[4] = {};
            // Few distinct values, so that the transparent one occurs.
            const bool isKey = random() % 4 == 0;
            for (int c = 0; c < channels; ++c) {
                values[c] = isKey ? 1 : unsigned(random()) & sampleMax;
                const int bit = (x * channels + c) * kind.depth;
                if (kind.depth == 16) {
                    row[size_t(bit / 8)] = uint8_t(values[c] >> 8);
                    row[size_t(bit / 8) + 1] = uint8_t(values[c]);
                } else {
                    row[size_t(bit / 8)] |= uint8_t(values[c] << (8 - kind.depth - bit % 8));
                }
            }
            const auto scaled = [&](unsigned value) { return value * 255.0 / sampleMax; };
            const bool isColor = kind.colorType & PNG_COLOR_MASK_COLOR;
            double rgba[4] = {scaled(values[0]), scaled(values[isColor ? 1 : 0]), scaled(values[isColor ? 2 : 0]), 255};
            if (kind.colorType & PNG_COLOR_MASK_ALPHA) rgba[3] = scaled(values[channels - 1]);
            if (isPalette) {
                const png_color& entry = palette[values[0]];
                const double alpha = kind.hasTransparency ? paletteAlpha[values[0]] : 255.0;
                rgba[0] = entry.red, rgba[1] = entry.green, rgba[2] = entry.blue, rgba[3] = alpha;
            } else if (kind.hasTransparency &&
                       std::all_of(values, values + channels, [](unsigned v) { return v == 1; })) {
                rgba[3] = 0;
            }
            sample.straight.insert(sample.straight.end(), rgba, rgba + 4);
        }
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &sample.file, appendBytes, nullptr);
    png_set_IHDR(png, info, kSide, kSide, kind.depth, kind.colorType,
                 kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    const int colors = int(std::min(sampleMax + 1, 256u));
    if (isPalette) png_set_PLTE(png, info, palette, colors);
    if (kind.hasTransparency) png_set_tRNS(png, info, paletteAlpha, isPalette ? colors : 0, &transparent);
    std::vector<png_bytep> pointers;
    for (auto& row : rows) pointers.push_back(row.data());
    png_set_rows(png, info, pointers.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return sample;
}

std::vector<Kind> allKinds() {
    std::vector<Kind> kinds;
    const auto add = [&](int colorType, std::initializer_list<int> depths, bool mayHaveTransparency) {
        for (const int depth : depths) {
            for (const bool interlaced : {false, true}) {
                kinds.push_back({colorType, depth, interlaced, false});
                if (mayHaveTransparency) kinds.push_back({colorType, depth, interlaced, true});
            }
        }
    };
    add(PNG_COLOR_TYPE_GRAY, {1, 2, 4, 8, 16}, true);
    add(PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}, true);
    add(PNG_COLOR_TYPE_RGB, {8, 16}, true);
    add(PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}, false);
    add(PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}, false);
    return kinds;
}

TEST(PNG, ReadsEveryColourTypeDepthAndInterlace) {
    unsigned seed = 1;
    for (const Kind& kind : allKinds()) {
        const Sample sample = sampleOf(kind, ++seed);
        std::string error;
        const auto bitmap = bitmapFromPNG(*NSData::dataWithBytes(sample.file), &error);
        const std::string what = "type " + std::to_string(kind.colorType) + " depth " + std::to_string(kind.depth);
        ASSERT_NE(bitmap, nullptr) << what << ": " << error;
        for (int i = 0; i < kSide * kSide; ++i) {
            const uint8_t* const pixel = bitmap->row(i / kSide) + 4 * (i % kSide);
            const double* const straight = sample.straight.data() + 4 * i;
            for (int c = 0; c < 3; ++c) {
                // Samples of 16 bits are rounded to 8, alpha too, before they are premultiplied.
                ASSERT_NEAR(pixel[c], straight[c] * straight[3] / 255, kind.depth == 16 ? 1.51 : 0.51)
                    << what << " pixel " << i;
            }
            ASSERT_NEAR(pixel[3], straight[3], 0.51) << what << " pixel " << i;
        }
    }
}

TEST(PNG, EveryTruncationIsRefusedWithAReason) {
    const Sample sample = sampleOf({PNG_COLOR_TYPE_RGB_ALPHA, 8, true, false}, 5);
    for (size_t length = 0; length < sample.file.size(); ++length) {
        std::string error;
        const std::vector<uint8_t> cut(sample.file.begin(), sample.file.begin() + std::ptrdiff_t(length));
        EXPECT_EQ(bitmapFromPNG(*NSData::dataWithBytes(cut), &error), nullptr) << length;
        EXPECT_NE(error.find(length < 8 ? "not a PNG file" : "damaged PNG file"), std::string::npos)
            << length << ": " << error;
    }
}

TEST(PNG, FlippedBytesAreRefusedOrHarmless) {
    int refused = 0, flips = 0;
    for (const Kind& kind : {Kind{PNG_COLOR_TYPE_PALETTE, 4, false, true}, {PNG_COLOR_TYPE_RGB, 16, true, true}}) {
        const Sample sample = sampleOf(kind, 6);
        for (size_t at = 0; at < sample.file.size(); ++at) {
            for (const int bit : {0x01, 0x80, 0xFF}) {
                auto damaged = sample.file;
                damaged[at] = uint8_t(damaged[at] ^ bit);
                ++flips;
                std::string error;
                const bool isRead = bitmapFromPNG(*NSData::dataWithBytes(damaged), &error) != nullptr;
                EXPECT_EQ(isRead, error.empty());
                refused += !isRead;
            }
        }
    }
    EXPECT_GT(refused, flips * 3 / 4) << "checksums catch all but the ancillary chunk";
}

TEST(PNG, GiantSizesAreRefusedBeforeMemoryIsTaken) {
    Sample sample = sampleOf({PNG_COLOR_TYPE_RGB, 8, false, false}, 7);
    const auto setSide = [&](size_t at, uint32_t side) {
        png_save_uint_32(sample.file.data() + at, side);
        // The checksum of IHDR, from its type to its end, comes right after; zlib's table-free definition.
        uint32_t crc = 0xFFFFFFFF;
        for (size_t i = 12; i < 29; ++i) {
            crc ^= sample.file[i];
            for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
        }
        png_save_uint_32(sample.file.data() + 29, ~crc);
    };
    setSide(16, 0x7FFFFFFF);
    setSide(20, 0x7FFFFFFF);
    std::string error;
    EXPECT_EQ(bitmapFromPNG(*NSData::dataWithBytes(sample.file), &error), nullptr);
    EXPECT_NE(error, "");
    setSide(16, 16384);
    setSide(20, 16385);
    EXPECT_EQ(bitmapFromPNG(*NSData::dataWithBytes(sample.file), &error), nullptr);
    EXPECT_NE(error.find("16384 x 16385"), std::string::npos) << error;
    EXPECT_EQ(bitmapFromPNG(*NSData::data(), nullptr), nullptr);
}

}  // namespace
}  // namespace qz
