#include "platform/graphics/PNG.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>

#include <png.h>

#include "platform/graphics/Compositing.h"
#include "platform/graphics/NSColor.h"

// libpng leaves a failed call by longjmp. It lands in the function that called setjmp, so nothing between the two may
// own anything: the owners are the members of the reader and the writer.

namespace qz {
namespace {

constexpr size_t kSignatureBytes = 8;

/// What went wrong inside libpng; fixed storage, since no exception may pass through it.
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

    /// Up to the first pixel. Takes no memory in proportion to the picture.
    bool readHeader() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_read_fn(png_, this, readBytes);
        // The size is checked by the caller, who knows what a bitmap may hold.
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_read_info(png_, info_);
        return true;
    }

    /// As straight RGBA of 8 bits a sample. The rows of the bitmap hold the passes of an interlaced picture, so they
    /// start zeroed.
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
    // What is left to read.
    std::string_view file_;
    png_structp png_;
    png_infop info_;
};

class PngWriter {
public:
    explicit PngWriter(const NSBitmapImageRep& bitmap)
        : bitmap_(bitmap),
          row_(size_t{4} * static_cast<size_t>(bitmap.pixelsWide())),
          png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, &failure_, Failure::raise, ignoreWarning)),
          info_(png_ ? png_create_info_struct(png_) : nullptr) {}
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }

    /// False when there is too little memory.
    bool write() {
        if (!info_ || setjmp(png_jmpbuf(png_))) return false;
        png_set_write_fn(png_, this, writeBytes, nullptr);
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(bitmap_.pixelsWide()),
                     static_cast<png_uint_32>(bitmap_.pixelsHigh()), 8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        // Titles are flat colours on clear ground: unfiltered rows are both smaller and several times faster than
        // chosen filters.
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
        png_write_info(png_, info_);
        for (int32_t y = 0; y < bitmap_.pixelsHigh(); ++y) {
            unpremultiply(bitmap_.row(y));
            png_write_row(png_, row_.data());
        }
        png_write_end(png_, info_);
        return true;
    }

    std::vector<uint8_t> takeFile() { return std::move(file_); }

private:
    static void writeBytes(png_structp png, png_bytep bytes, size_t count) {
        auto& writer = *static_cast<PngWriter*>(png_get_io_ptr(png));
        bool isWritten = true;
        try {
            writer.file_.insert(writer.file_.end(), bytes, bytes + count);
        } catch (const std::bad_alloc&) {
            isWritten = false;
        }
        if (!isWritten) png_error(png, "out of memory");
    }

    // c = 255 p / a to the nearest; reading it back by p = c a / 255 to the nearest gives p again for every p up to a.
    void unpremultiply(const uint8_t* pixels) {
        for (size_t i = 0; i < row_.size(); i += 4) {
            const uint32_t alpha = pixels[i + 3];
            for (size_t sample = i; sample < i + 3; ++sample) {
                const uint32_t straight = alpha == 0 ? 0 : (pixels[sample] * 255u + alpha / 2) / alpha;
                row_[sample] = static_cast<uint8_t>(std::min(straight, 255u));
            }
            row_[i + 3] = static_cast<uint8_t>(alpha);
        }
    }

    const NSBitmapImageRep& bitmap_;
    std::vector<uint8_t> row_;
    std::vector<uint8_t> file_;
    Failure failure_;
    png_structp png_;
    png_infop info_;
};

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
    PngWriter writer(bitmap);
    if (!writer.write()) throw std::bad_alloc();
    return NSData::dataWithBytes(writer.takeFile());
}

Ref<NSBitmapImageRep> bitmapFromPNG(const NSData& file, std::string* error) {
    const auto* const signature = file.bytes().data();
    if (file.length() < kSignatureBytes || png_sig_cmp(signature, 0, kSignatureBytes) != 0) {
        return failed(error, "not a PNG file; save the picture as PNG");
    }
    PngReader reader(file.view());
    if (!reader.isReady()) throw std::bad_alloc();
    if (!reader.readHeader()) return failed(error, damaged(reader));
    const uint64_t bytes = uint64_t{4} * reader.width() * reader.height();
    const std::string size = std::to_string(reader.width()) + " x " + std::to_string(reader.height()) + " pixels";
    if (bytes > NSBitmapImageRep::kBytesMax) {
        return failed(error, "PNG file of " + size + ", more than the " +
                                 std::to_string(NSBitmapImageRep::kBytesMax / 4) + " in all that fit; scale it down");
    }
    auto bitmap =
        NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = static_cast<int32_t>(reader.width()),
                                                             .pixelsHigh = static_cast<int32_t>(reader.height()),
                                                             .colorSpaceName = NSCalibratedRGBColorSpace});
    if (!bitmap) return failed(error, "PNG file of " + size + ", for which there is too little memory");
    if (!reader.readPixels(*bitmap)) return failed(error, damaged(reader));
    premultiply(*bitmap);
    return bitmap;
}

}  // namespace qz
