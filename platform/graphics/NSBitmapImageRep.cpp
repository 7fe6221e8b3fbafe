#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include <sys/mman.h>

#include "platform/graphics/PixelRect.h"

namespace qz {
namespace {

constexpr std::array kBitsPerSample = {1, 2, 4, 8, 12, 16, 32};
// CMYK and alpha.
constexpr int32_t kSamplesPerPixelMax = 5;
// For smaller storage an allocator is just as fast.
constexpr uint64_t kSpareBytesMin = uint64_t{1} << 18;

bool isPossible(const NSBitmapImageRep::Format& format) {
    return !format.isPlanar && format.pixelsWide > 0 && format.pixelsHigh > 0 && format.samplesPerPixel > 0 &&
           format.samplesPerPixel <= kSamplesPerPixelMax &&
           std::ranges::find(kBitsPerSample, format.bitsPerSample) != kBitsPerSample.end();
}

// The format with zeros replaced; no value if a pixel does not hold its samples or a row its pixels.
std::optional<NSBitmapImageRep::Format> completed(NSBitmapImageRep::Format format) {
    if (!isPossible(format)) return std::nullopt;
    const int32_t sampleBits = format.bitsPerSample * format.samplesPerPixel;
    if (format.bitsPerPixel == 0) format.bitsPerPixel = sampleBits;
    if (format.bitsPerPixel < sampleBits) return std::nullopt;
    const int64_t rowBytesMin = (int64_t{format.pixelsWide} * format.bitsPerPixel + 7) / 8;
    const int64_t rowBytes = format.bytesPerRow == 0 ? rowBytesMin : format.bytesPerRow;
    if (rowBytes < rowBytesMin || rowBytes > INT32_MAX) return std::nullopt;
    format.bytesPerRow = static_cast<int32_t>(rowBytes);
    return format;
}

}  // namespace

void NSBitmapImageRep::Unmap::operator()(uint8_t* data) const {
    ::munmap(data, bytes);
}

/// The storage left by a bitmap, and where it has drawn.
struct NSBitmapImageRep::Spare {
    Storage storage{nullptr, Unmap{}};
    size_t bytesPerRow = 0;
    PixelRect drawnBox;
    bool isAllDrawn = false;

    ~Spare() { isGone = true; }

    /// The spare of this thread; null during thread exit, which bitmaps with static lifetime may outlive.
    static Spare* ofThread() {
        thread_local Spare spare;
        return isGone ? nullptr : &spare;
    }

    Storage takeCleared() {
        if (isAllDrawn) {
            std::memset(storage.get(), 0, storage.get_deleter().bytes);  // a host may have written between rows
        } else {
            const auto left = 4 * static_cast<size_t>(drawnBox.x), width = 4 * static_cast<size_t>(drawnBox.width);
            uint8_t* row = storage.get() + static_cast<size_t>(drawnBox.y) * bytesPerRow + left;
            for (int32_t y = 0; y < drawnBox.height; ++y, row += bytesPerRow) std::memset(row, 0, width);
        }
        return std::exchange(storage, Storage(nullptr, Unmap{}));
    }

private:
    static inline thread_local bool isGone = false;
};

// Directly from the system, so that pages cost nothing until touched: after freeing one large block, an allocator takes
// the next from its heap and clears all of it.
NSBitmapImageRep::Storage NSBitmapImageRep::zeroedStorage(const Format& format) {
    const uint64_t bytes = static_cast<uint64_t>(format.bytesPerRow) * static_cast<uint64_t>(format.pixelsHigh);
    if (bytes > kBytesMax) return {nullptr, Unmap{}};
    Spare* const spare = Spare::ofThread();
    if (spare && spare->storage && spare->storage.get_deleter().bytes == bytes) return spare->takeCleared();
    void* const data = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return {data == MAP_FAILED ? nullptr : static_cast<uint8_t*>(data), Unmap{bytes}};
}

NSBitmapImageRep::~NSBitmapImageRep() {
    const bool isWorthKeeping = storage_ && format_.bitsPerPixel == 32 &&
                                storage_.get_deleter().bytes >= kSpareBytesMin &&
                                storage_.get_deleter().bytes <= kSpareBytesMax;
    Spare* const spare = isWorthKeeping ? Spare::ofThread() : nullptr;
    if (!spare) return;
    spare->storage = std::move(storage_);
    spare->bytesPerRow = static_cast<size_t>(format_.bytesPerRow);
    spare->drawnBox = drawnBox_;
    spare->isAllDrawn = drawnBox_ == bounds();
}

NSBitmapImageRep::NSBitmapImageRep(const Format& format, uint8_t* data, Storage storage)
    : format_(format),
      storage_(std::move(storage)),
      data_(data),
      size_{static_cast<float>(format.pixelsWide), static_cast<float>(format.pixelsHigh)} {
    if (!storage_) drawnBox_ = bounds();
}

Ref<NSBitmapImageRep> NSBitmapImageRep::initWithBitmapDataPlanes(uint8_t* data, const Format& format) {
    const auto complete = completed(format);
    if (!complete) return {};
    if (data) return Ref<NSBitmapImageRep>(new NSBitmapImageRep(*complete, data, {nullptr, Unmap{}}));
    Storage storage = zeroedStorage(*complete);
    if (!storage) return {};
    uint8_t* const pixels = storage.get();
    return Ref<NSBitmapImageRep>(new NSBitmapImageRep(*complete, pixels, std::move(storage)));
}

void NSBitmapImageRep::noteDrawn(const PixelRect& box) {
    drawnBox_ = unionOf(drawnBox_, box);
}

}  // namespace qz
