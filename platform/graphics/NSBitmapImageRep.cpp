#include "platform/graphics/NSBitmapImageRep.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace qz {
namespace {

constexpr std::array kBitsPerSample = {1, 2, 4, 8, 12, 16, 32};
// CMYK and alpha.
constexpr int32_t kSamplesPerPixelMax = 5;

bool isPossible(const NSBitmapImageRep::Format& format) {
    return !format.isPlanar && format.pixelsWide > 0 && format.pixelsHigh > 0 && format.samplesPerPixel > 0 &&
           format.samplesPerPixel <= kSamplesPerPixelMax &&
           std::ranges::find(kBitsPerSample, format.bitsPerSample) != kBitsPerSample.end();
}

// The format with its zeros filled in; none when a pixel does not hold its samples or a row its pixels.
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

void NSBitmapImageRep::Free::operator()(uint8_t* data) const {
    std::free(data);
}

NSBitmapImageRep::NSBitmapImageRep(const Format& format, uint8_t* data, std::unique_ptr<uint8_t[], Free> storage)
    : format_(format),
      storage_(std::move(storage)),
      data_(data),
      size_{static_cast<float>(format.pixelsWide), static_cast<float>(format.pixelsHigh)} {
    if (!storage_) drawnBox_ = bounds();
}

Ref<NSBitmapImageRep> NSBitmapImageRep::initWithBitmapDataPlanes(uint8_t* data, const Format& format) {
    const auto complete = completed(format);
    if (!complete) return {};
    if (data) return Ref<NSBitmapImageRep>(new NSBitmapImageRep(*complete, data, nullptr));
    const uint64_t bytes = static_cast<uint64_t>(complete->bytesPerRow) * static_cast<uint64_t>(complete->pixelsHigh);
    if (bytes > kBytesMax) return {};
    // Pages that calloc takes fresh from the system cost nothing until a row is touched.
    std::unique_ptr<uint8_t[], Free> storage(static_cast<uint8_t*>(std::calloc(bytes, 1)));
    if (!storage) return {};
    uint8_t* const pixels = storage.get();
    return Ref<NSBitmapImageRep>(new NSBitmapImageRep(*complete, pixels, std::move(storage)));
}

}  // namespace qz
