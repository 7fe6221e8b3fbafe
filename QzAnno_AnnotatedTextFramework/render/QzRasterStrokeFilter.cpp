#include "QzAnno_AnnotatedTextFramework/render/QzRasterStrokeFilter.h"

#include <cstring>
#include <memory>
#include <new>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/graphics/vImageMax_Planar8.h"

namespace qz {
namespace {

constexpr std::string_view kSource = "QzAnno_AnnotatedTextFramework/QzRasterStrokeFilter";

/// The whole pixels of a side in points: 0 if it is negative or NaN, clamped to the largest number.
uint32_t pixelsOf(float side) {
    if (!(side > 0)) return 0;
    return side < 0x1p32f ? static_cast<uint32_t>(side) : UINT32_MAX;
}

/// In 64 bits, since the widest rows exceed 32. Rows a power of two apart would share the same few cache lines.
uint64_t planeRowBytes(uint32_t width) {
    uint64_t bytes = (uint64_t{width} + 15) / 16 * 16;
    while ((bytes & (bytes - 1)) == 0) bytes += 16;
    return bytes;
}

/// A channel of the bitmap before and after the maximum filter.
///
/// The two planes share one block: the C library would return the pages of two blocks of several megabytes to the
/// system at every call, and getting them again takes longer than everything else.
class Planes {
public:
    Planes(uint32_t width, uint32_t height, uint32_t rowBytes)
        : storage_(new (std::nothrow) uint8_t[2 * size_t{height} * rowBytes]),
          shape_{storage_.get(), height, width, rowBytes} {}
    explicit operator bool() const { return storage_ != nullptr; }

    vImage_Buffer source() const { return shape_; }
    vImage_Buffer destination() const {
        vImage_Buffer plane = shape_;
        plane.data += size_t{plane.height} * plane.rowBytes;
        return plane;
    }

private:
    const std::unique_ptr<uint8_t[]> storage_;
    const vImage_Buffer shape_;
};

uint8_t* rowOf(const vImage_Buffer& plane, uint32_t y) {
    return plane.data + size_t{y} * plane.rowBytes;
}

// Compiled once per register width, inside the functions that choose it.
[[gnu::always_inline]] inline void copyIn(const uint8_t* pixels, uint32_t width, uint8_t* __restrict channel) {
    for (size_t x = 0; x < width; ++x) {
        uint32_t pixel;
        std::memcpy(&pixel, pixels + 4 * x, sizeof pixel);
        channel[x] = static_cast<uint8_t>(pixel);
    }
}

[[gnu::always_inline]] inline void mergeBack(const uint8_t* __restrict channel, uint32_t width, uint8_t* pixels) {
    for (size_t x = 0; x < width; ++x) {
        uint32_t pixel;
        std::memcpy(&pixel, pixels + 4 * x, sizeof pixel);
        pixel = (pixel & 0xff) | channel[x];
        std::memcpy(pixels + 4 * x, &pixel, sizeof pixel);
    }
}

/// Functions that move a row of the channel between bitmap and plane.
struct RowMoves {
    void (*copyIn)(const uint8_t* pixels, uint32_t width, uint8_t* channel);
    void (*mergeBack)(const uint8_t* channel, uint32_t width, uint8_t* pixels);
};

constexpr RowMoves kPlainMoves = {
    [](const uint8_t* pixels, uint32_t width, uint8_t* channel) { copyIn(pixels, width, channel); },
    [](const uint8_t* channel, uint32_t width, uint8_t* pixels) { mergeBack(channel, width, pixels); }};

#if defined(__x86_64__)
[[gnu::target("avx2")]] void copyInAVX2(const uint8_t* pixels, uint32_t width, uint8_t* channel) {
    copyIn(pixels, width, channel);
}

[[gnu::target("avx2")]] void mergeBackAVX2(const uint8_t* channel, uint32_t width, uint8_t* pixels) {
    mergeBack(channel, width, pixels);
}

RowMoves widestMoves() {
    return __builtin_cpu_supports("avx2") ? RowMoves{copyInAVX2, mergeBackAVX2} : kPlainMoves;
}
#else
RowMoves widestMoves() {
    return kPlainMoves;
}
#endif

}  // namespace

void rasterStrokeWithSize(NSBitmapImageRep& bitmap, int32_t size) {
    const uint32_t width = pixelsOf(bitmap.size().width), height = pixelsOf(bitmap.size().height);
    const uint64_t rowBytes = planeRowBytes(width);
    if (height > 0 && rowBytes > UINT32_MAX / height) {
        NSLog("rasterStrokeWithSize: a bitmap of %@ points is too large; its planes must not pass 4 GiB\n",
              {NSStringFromSize(bitmap.size())});
        return;
    }
    const Planes planes(width, height, static_cast<uint32_t>(rowBytes));
    if (!planes) return reportFailedAssertion(kSource, 43, "result->data != NULL");
    if (!bitmap.bitmapData()) return reportFailedAssertion(kSource, 52, "bitMapDataPtr != NULL");
    if (bitmap.bitsPerPixel() != 32) {
        NSLog("ERROR! %d bits per pixel in rasterStrokeImageRep!\n", {bitmap.bitsPerPixel()});
        return;
    }
    if (width != static_cast<uint32_t>(bitmap.pixelsWide()) || height != static_cast<uint32_t>(bitmap.pixelsHigh())) {
        NSLog("rasterStrokeWithSize: a bitmap of %d x %d pixels has a size of %@ points; set its size to its pixels\n",
              {bitmap.pixelsWide(), bitmap.pixelsHigh(), NSStringFromSize(bitmap.size())});
        return;
    }
    const RowMoves moves = widestMoves();
    for (uint32_t y = 0; y < height; ++y)
        moves.copyIn(bitmap.row(static_cast<int32_t>(y)), width, rowOf(planes.source(), y));
    const int64_t kernelSide = 2 * int64_t{size} + 1;
    if (vImageMax_Planar8(planes.source(), planes.destination(), kernelSide, kernelSide) != vImage_Error::noError) {
        NSLog("ERROR: vImageMax_Planar8 returned badly\n");
        return;
    }
    for (uint32_t y = 0; y < height; ++y)
        moves.mergeBack(rowOf(planes.destination(), y), width, bitmap.row(static_cast<int32_t>(y)));
}

}  // namespace qz
