#include "QzAnno/platform/graphics/NSImage.h"

#include <cmath>
#include <vector>

#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

struct Focus {
    Ref<NSImage> image;
    // The context that was current before.
    Ref<NSGraphicsContext> previous;
};

thread_local std::vector<Focus> focusesOfThread;

// The number of pixels for a side in points; 0 if no bitmap can have it.
int32_t pixelsOf(float side) {
    const float pixels = std::ceil(side);
    return pixels >= 1 && pixels < 0x1p31f ? static_cast<int32_t>(pixels) : 0;
}

}  // namespace

Ref<NSImage> NSImage::initWithSize(NSSize size) {
    auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = pixelsOf(size.width),
                                                                       .pixelsHigh = pixelsOf(size.height),
                                                                       .colorSpaceName = NSCalibratedRGBColorSpace});
    if (!bitmap) return {};
    return Ref<NSImage>(new NSImage(size, std::move(bitmap)));
}

void NSImage::lockFocus() {
    // Do everything that may run out of memory first: an entry without its context would never be removed.
    Ref<NSGraphicsContext> context = NSGraphicsContext::graphicsContextWithBitmapImageRep(bitmap_, flipped_);
    focusesOfThread.push_back({refTo(*this), NSGraphicsContext::currentContext()});
    NSGraphicsContext::setCurrentContext(std::move(context));
}

void NSImage::unlockFocus() {
    if (focusesOfThread.empty() || focusesOfThread.back().image.get() != this) return;
    // Remove it first: the entry may hold the last reference to this image.
    const Focus focus = std::move(focusesOfThread.back());
    focusesOfThread.pop_back();
    NSGraphicsContext::setCurrentContext(focus.previous);
}

}  // namespace qz
