#pragma once

#include <cstdint>
#include <memory>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

/// A rectangle of pixels in memory. With 8 bits per sample and 4 samples it is premultiplied RGBA, bytes in the order
/// R, G, B, A, rows from the top.
class NSBitmapImageRep final : public NSObject {
public:
    /// The memory layout of pixels. Drawing and PNG files support only RGBA with 8 bits per sample and 32 bits per
    /// pixel.
    struct Format {
        int32_t pixelsWide = 0;          ///< above 0
        int32_t pixelsHigh = 0;          ///< above 0
        int32_t bitsPerSample = 8;       ///< 1, 2, 4, 8, 12, 16 or 32
        int32_t samplesPerPixel = 4;     ///< 1 to 5, alpha included
        bool hasAlpha = true;            ///< whether one of the samples is alpha
        bool isPlanar = false;           ///< a plane per sample; not supported
        Ref<NSString> colorSpaceName{};  ///< stored but not used; may be null
        int32_t bytesPerRow = 0;         ///< from one row to the next; 0 means the minimum
        int32_t bitsPerPixel = 0;        ///< at least those of the samples; 0 means the minimum
    };

    /// If `data` is null, allocates zeroed storage; otherwise uses `data` as it is, which must hold bytesPerRow x
    /// pixelsHigh bytes, and which the caller owns and keeps alive. Returns null if the format is planar or not
    /// positive, if rows are too short for their pixels, or if storage would exceed `kBytesMax` or the available
    /// memory.
    ///
    /// Each thread keeps the storage of the last large bitmap of 32-bit pixels that it freed, up to `kSpareBytesMax`,
    /// for the next bitmap of that size: clearing the drawn part takes a tenth of the time of getting fresh pages from
    /// the system.
    static Ref<NSBitmapImageRep> initWithBitmapDataPlanes(uint8_t* data, const Format& format);

    /// The most storage that a bitmap may own: 1 GiB, 16384 x 16384 pixels.
    static constexpr uint64_t kBytesMax = Limits::kBitmapBytesMax;

    /// The largest storage that a thread keeps: 64 MiB, more than a frame of 4096 x 2160 pixels.
    static constexpr uint64_t kSpareBytesMax = uint64_t{1} << 26;

    ~NSBitmapImageRep() override;

    /// The pixels, starting with the first byte of the top row; valid as long as the bitmap, unless they are the
    /// caller's. Since the non-const version allows drawing anywhere, it sets `drawnBox` to the whole bitmap.
    ///@{
    uint8_t* bitmapData() {
        noteDrawn(bounds());
        return data_;
    }
    const uint8_t* bitmapData() const { return data_; }
    ///@}
    /// The format, with zeros replaced by the actual values.
    ///@{
    int32_t pixelsWide() const { return format_.pixelsWide; }
    int32_t pixelsHigh() const { return format_.pixelsHigh; }
    int32_t bytesPerRow() const { return format_.bytesPerRow; }
    int32_t bitsPerPixel() const { return format_.bitsPerPixel; }
    int32_t bitsPerSample() const { return format_.bitsPerSample; }
    int32_t samplesPerPixel() const { return format_.samplesPerPixel; }
    bool hasAlpha() const { return format_.hasAlpha; }
    Ref<NSString> colorSpaceName() const { return format_.colorSpaceName; }
    ///@}
    /// In points; the pixel dimensions until set. `NSGraphicsContext` ignores it.
    ///@{
    NSSize size() const { return size_; }
    void setSize(NSSize size) { size_ = size; }
    ///@}
    /// The first byte of a row, counted from 0 at the top. The index must be below `pixelsHigh`, which is not checked.
    /// The non-const version affects `drawnBox` like `bitmapData`.
    ///@{
    uint8_t* row(int32_t y) { return bitmapData() + offsetOfRow(y); }
    const uint8_t* row(int32_t y) const { return data_ + offsetOfRow(y); }
    ///@}

    /// Every pixel, from (0, 0).
    PixelRect bounds() const { return {0, 0, format_.pixelsWide, format_.pixelsHigh}; }
    /// Every pixel outside this box is still zero, so the cost of a title depends on its own rows and not the screen's.
    /// For a caller's data it is the whole bitmap.
    const PixelRect& drawnBox() const { return drawnBox_; }
    /// For drawing that maintains the drawn box: extends it to contain `box`, which is then written through
    /// `rowWithin`.
    void noteDrawn(const PixelRect& box);
    /// As `row`, without changing the drawn box: write only pixels inside it.
    uint8_t* rowWithin(int32_t y) { return data_ + offsetOfRow(y); }

    std::string className() const override { return "NSBitmapImageRep"; }

private:
    struct Unmap {
        uint64_t bytes;
        void operator()(uint8_t* data) const;
    };
    using Storage = std::unique_ptr<uint8_t[], Unmap>;
    struct Spare;

    static Storage zeroedStorage(const Format& format);

    size_t offsetOfRow(int32_t y) const { return static_cast<size_t>(y) * static_cast<size_t>(format_.bytesPerRow); }

    NSBitmapImageRep(const Format& format, uint8_t* data, Storage storage);

    const Format format_;
    Storage storage_;
    uint8_t* const data_;
    NSSize size_;
    PixelRect drawnBox_;
};

}  // namespace qz
