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
    /// How pixels lie in memory. Drawing and PNG files take RGBA of 8 bits a sample alone, 32 bits a pixel.
    struct Format {
        int32_t pixelsWide = 0;          ///< above 0
        int32_t pixelsHigh = 0;          ///< above 0
        int32_t bitsPerSample = 8;       ///< 1, 2, 4, 8, 12, 16 or 32
        int32_t samplesPerPixel = 4;     ///< 1 to 5, alpha included
        bool hasAlpha = true;            ///< whether one of the samples is alpha
        bool isPlanar = false;           ///< a plane for each sample, which is refused
        Ref<NSString> colorSpaceName{};  ///< kept for whoever asks; may be none
        int32_t bytesPerRow = 0;         ///< from one row to the next; 0 for as few as hold a row
        int32_t bitsPerPixel = 0;        ///< at least those of the samples; 0 for as many
    };

    /// Storage of this bitmap's own, zeroed, when `data` is null; otherwise `data` is used as it stands, must hold
    /// bytesPerRow x pixelsHigh bytes, and stays the caller's, who keeps it alive. None for a planar or non-positive
    /// format, rows that do not hold their pixels, or own storage beyond `kBytesMax` or beyond what the system has.
    ///
    /// A thread keeps the storage of the last large bitmap of 32-bit pixels that it let go, up to `kSpareBytesMax`, for
    /// the next one of that size: clearing what was drawn costs a tenth of taking fresh pages from the system.
    static Ref<NSBitmapImageRep> initWithBitmapDataPlanes(uint8_t* data, const Format& format);

    /// The most bytes of pixels that a bitmap may own: 1 GiB, 16384 x 16384 pixels.
    static constexpr uint64_t kBytesMax = Limits::kBitmapBytesMax;

    /// The largest storage that a thread keeps: 64 MiB, more than a frame of 4096 x 2160 pixels.
    static constexpr uint64_t kSpareBytesMax = uint64_t{1} << 26;

    ~NSBitmapImageRep() override;

    /// The pixels, from the first byte of the top row; they live as long as the bitmap, or are the caller's. Whoever
    /// takes them for writing may draw anywhere, so from then on `drawnBox` is the whole bitmap.
    ///@{
    uint8_t* bitmapData() {
        noteDrawn(bounds());
        return data_;
    }
    const uint8_t* bitmapData() const { return data_; }
    ///@}
    /// The format, with what it left at 0 filled in.
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
    /// In points; the pixel dimensions until it is set. `NSGraphicsContext` does not look at it.
    ///@{
    NSSize size() const { return size_; }
    void setSize(NSSize size) { size_ = size; }
    ///@}
    /// The first byte of a row counted from the top, from 0 and below `pixelsHigh`, which is not checked. For writing
    /// as `bitmapData`.
    ///@{
    uint8_t* row(int32_t y) { return bitmapData() + offsetOfRow(y); }
    const uint8_t* row(int32_t y) const { return data_ + offsetOfRow(y); }
    ///@}

    /// Every pixel, from (0, 0).
    PixelRect bounds() const { return {0, 0, format_.pixelsWide, format_.pixelsHigh}; }
    /// Every pixel outside is still zero, as it was made; so a title costs its own rows and not the screen's. All of a
    /// bitmap over a caller's data.
    const PixelRect& drawnBox() const { return drawnBox_; }
    /// For drawing that keeps the drawn box: widens it to hold `box`, which is then written by `rowWithin`.
    void noteDrawn(const PixelRect& box);
    /// As `row`, leaving the drawn box as it is: only pixels inside it may be written.
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
