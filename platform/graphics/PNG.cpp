#include "QzAnno/platform/graphics/PNG.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include <libdeflate.h>
#include <png.h>

#include "QzAnno/platform/graphics/NSColor.h"
#include "platform/graphics/Compositing.h"
#include "platform/graphics/StraightAlpha.h"

// Files are read by libpng, which supports every kind, and written with libdeflate, which compresses a picture in a
// fraction of the time of libpng and zlib; https://www.w3.org/TR/png-3/ describes the chunks.
//
// libpng leaves a failed call by longjmp to the function that called setjmp, so no frame in between may own anything:
// the reader's members own everything.

namespace qz {
namespace {

constexpr uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
// From 1 to 12; above this, files hardly shrink and the time doubles.
constexpr int kCompressionLevel = 6;

/// An error inside libpng; fixed storage, since no exception may pass through it.
struct Failure {
    char text[160] = "";

    [[noreturn]] static void raise(png_structp png, png_const_charp message) {
        auto& failure = *static_cast<Failure*>(png_get_error_ptr(png));
        std::snprintf(failure.text, sizeof failure.text, "%s", message);
        png_longjmp(png, 1);
    }
};

void ignoreWarning(png_structp, png_const_charp) {}

class PngReader {
public:
    explicit PngReader(std::string_view file)
        : file_(file),
          png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &failure_, Failure::raise, ignoreWarning)),
          info_(png_ ? png_create_info_struct(png_) : nullptr) {}
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

    bool isReady() const { return info_ != nullptr; }
    const char* failure() const { return failure_.text; }
    uint32_t width() const { return png_get_image_width(png_, info_); }
    uint32_t height() const { return png_get_image_height(png_, info_); }

    /// Reads up to the first pixel. Allocates nothing proportional to the picture.
    bool readHeader() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_read_fn(png_, this, readBytes);
        // The caller checks the size against what a bitmap can hold.
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_read_info(png_, info_);
        return true;
    }

    /// Reads straight RGBA with 8 bits per sample. The bitmap's rows hold the passes of an interlaced picture, so they
    /// must start zeroed.
    bool readPixels(NSBitmapImageRep& bitmap) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_expand(png_);
        png_set_scale_16(png_);
        png_set_gray_to_rgb(png_);
        png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
        const int passes = png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        if (png_get_rowbytes(png_, info_) != size_t{4} * width()) png_error(png_, "unexpected kind of pixels");
        for (int pass = 0; pass < passes; ++pass) {
            for (int32_t y = 0; y < bitmap.pixelsHigh(); ++y) png_read_row(png_, bitmap.row(y), nullptr);
        }
        png_read_end(png_, nullptr);
        return true;
    }

private:
    static void readBytes(png_structp png, png_bytep bytes, size_t count) {
        auto& reader = *static_cast<PngReader*>(png_get_io_ptr(png));
        if (count > reader.file_.size()) png_error(png, "the file ends early");
        std::memcpy(bytes, reader.file_.data(), count);
        reader.file_.remove_prefix(count);
    }

    Failure failure_;
    // The part not read yet.
    std::string_view file_;
    png_structp png_;
    png_infop info_;
};

/// Uninitialised memory, which is written before it is read.
struct Buffer {
    explicit Buffer(size_t size) : bytes(std::make_unique_for_overwrite<uint8_t[]>(size)), length(size) {}

    std::unique_ptr<uint8_t[]> bytes;
    size_t length;
};

/// The rows in the form that a PNG file compresses, each after the byte for its filter. Titles are flat colours on a
/// clear background, for which unfiltered rows are both smaller and several times faster than chosen filters.
Buffer unfilteredRows(const NSBitmapImageRep& bitmap) {
    const auto width = static_cast<size_t>(bitmap.pixelsWide());
    Buffer rows((1 + 4 * width) * static_cast<size_t>(bitmap.pixelsHigh()));
    uint8_t* row = rows.bytes.get();
    for (int32_t y = 0; y < bitmap.pixelsHigh(); ++y, row += 4 * width) {
        *row++ = PNG_FILTER_VALUE_NONE;
        unpremultiply(bitmap.row(y), width, row);
    }
    return rows;
}

Buffer compressed(const Buffer& rows) {
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(kCompressionLevel), libdeflate_free_compressor);
    if (!compressor) throw std::bad_alloc();
    Buffer stream(libdeflate_zlib_compress_bound(compressor.get(), rows.length));
    stream.length =
        libdeflate_zlib_compress(compressor.get(), rows.bytes.get(), rows.length, stream.bytes.get(), stream.length);
    return stream;
}

void appendNumber(std::vector<uint8_t>& file, uint32_t number) {
    for (const int shift : {24, 16, 8, 0}) file.push_back(static_cast<uint8_t>(number >> shift));
}

void appendChunk(std::vector<uint8_t>& file, std::string_view name, std::span<const uint8_t> content) {
    appendNumber(file, static_cast<uint32_t>(content.size()));
    const size_t start = file.size();
    file.insert(file.end(), name.begin(), name.end());
    file.insert(file.end(), content.begin(), content.end());
    appendNumber(file, libdeflate_crc32(0, file.data() + start, file.size() - start));
}

void premultiply(NSBitmapImageRep& bitmap) {
    for (int32_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        uint8_t* pixel = bitmap.row(y);
        for (int32_t x = 0; x < bitmap.pixelsWide(); ++x, pixel += 4) {
            const uint32_t alpha = pixel[3];
            if (alpha == 255) continue;
            for (int i = 0; i < 3; ++i) pixel[i] = static_cast<uint8_t>((pixel[i] * alpha + 127) / 255);
        }
    }
}

Ref<NSBitmapImageRep> failed(std::string* error, const std::string& reason) {
    if (error) *error = reason;
    return {};
}

std::string damaged(const PngReader& reader) {
    return std::string("damaged PNG file (") + reader.failure() + "); export the picture again";
}

}  // namespace

Ref<NSData> pngFromBitmap(const NSBitmapImageRep& bitmap) {
    if (!isRGBA8(bitmap)) return {};
    std::vector<uint8_t> header;
    appendNumber(header, static_cast<uint32_t>(bitmap.pixelsWide()));
    appendNumber(header, static_cast<uint32_t>(bitmap.pixelsHigh()));
    header.insert(header.end(),
                  {8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE, PNG_INTERLACE_NONE});
    const Buffer stream = compressed(unfilteredRows(bitmap));
    std::vector<uint8_t> file(std::begin(kSignature), std::end(kSignature));
    appendChunk(file, "IHDR", header);
    appendChunk(file, "IDAT", {stream.bytes.get(), stream.length});
    appendChunk(file, "IEND", {});
    return NSData::dataWithBytes(std::move(file));
}

Ref<NSBitmapImageRep> bitmapFromPNG(const NSData& file, std::string* error) {
    if (file.length() < sizeof kSignature || std::memcmp(file.bytes().data(), kSignature, sizeof kSignature) != 0) {
        return failed(error, "not a PNG file; save the picture as PNG");
    }
    PngReader reader(file.view());
    if (!reader.isReady()) throw std::bad_alloc();
    if (!reader.readHeader()) return failed(error, damaged(reader));
    const uint64_t bytes = uint64_t{4} * reader.width() * reader.height();
    const std::string size = std::to_string(reader.width()) + " x " + std::to_string(reader.height()) + " pixels";
    if (bytes > NSBitmapImageRep::kBytesMax) {
        return failed(error, "PNG file of " + size + ", more than the " +
                                 std::to_string(NSBitmapImageRep::kBytesMax / 4) + " in all; scale it down");
    }
    auto bitmap =
        NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = static_cast<int32_t>(reader.width()),
                                                             .pixelsHigh = static_cast<int32_t>(reader.height()),
                                                             .colorSpaceName = NSCalibratedRGBColorSpace});
    if (!bitmap) return failed(error, "not enough memory for a PNG file of " + size);
    if (!reader.readPixels(*bitmap)) return failed(error, damaged(reader));
    premultiply(*bitmap);
    return bitmap;
}

}  // namespace qz
