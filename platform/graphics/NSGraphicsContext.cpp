#include "platform/graphics/NSGraphicsContext.h"

#include <algorithm>
#include <cmath>

#include "platform/graphics/Compositing.h"
#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/DeviceShape.h"

namespace qz {
namespace {

// Larger shapes are drawn in bands of rows, so that a mask never takes more than this.
constexpr int32_t kMaskBytesMax = 4 << 20;

thread_local Ref<NSGraphicsContext> currentOfThread;

uint8_t byteOf(float component) {
    return static_cast<uint8_t>(std::lround(component * 255));
}

StraightColor straightColorOf(const NSColor& color) {
    return {byteOf(color.redComponent()), byteOf(color.greenComponent()), byteOf(color.blueComponent()),
            byteOf(color.alphaComponent())};
}

}  // namespace

NSGraphicsContext::NSGraphicsContext(Ref<NSBitmapImageRep> bitmap, const NSAffineTransform& transform)
    : bitmap_(std::move(bitmap)),
      state_{.color = NSColor::blackColor(), .transform = transform},
      mask_(std::make_unique<CoverageMask>()) {}

NSGraphicsContext::~NSGraphicsContext() = default;

Ref<NSGraphicsContext> NSGraphicsContext::graphicsContextWithBitmapImageRep(Ref<NSBitmapImageRep> bitmap,
                                                                            bool flipped) {
    if (!bitmap || !isRGBA8(*bitmap)) return {};
    const NSAffineTransform upward{.m22 = -1, .tY = static_cast<double>(bitmap->pixelsHigh())};
    const NSAffineTransform transform = flipped ? NSAffineTransform{} : upward;
    return Ref<NSGraphicsContext>(new NSGraphicsContext(std::move(bitmap), transform));
}

Ref<NSGraphicsContext> NSGraphicsContext::currentContext() {
    return currentOfThread;
}

void NSGraphicsContext::setCurrentContext(Ref<NSGraphicsContext> context) {
    currentOfThread = std::move(context);
}

void NSGraphicsContext::saveGraphicsState() {
    saved_.push_back(state_);
}

void NSGraphicsContext::restoreGraphicsState() {
    if (saved_.empty()) return;
    state_ = std::move(saved_.back());
    saved_.pop_back();
}

void NSGraphicsContext::fill(const NSBezierPath& path) {
    paint(DeviceShape::fillOf(path, state_.transform));
}

void NSGraphicsContext::stroke(const NSBezierPath& path) {
    paint(DeviceShape::strokeOf(path, state_.transform));
}

void NSGraphicsContext::paint(const DeviceShape& shape) {
    if (!state_.color) return;
    const StraightColor color = straightColorOf(*state_.color);
    const PixelRect box = shape.pixelBounds({0, 0, bitmap_->pixelsWide(), bitmap_->pixelsHigh()});
    if (color.alpha == 0 || box.isEmpty()) return;
    const int32_t tileWidth = std::min(box.width, kCoverageSideMax);
    const int32_t tileHeight = std::min(kMaskBytesMax / tileWidth, kCoverageSideMax);
    for (int64_t y = box.y; y < box.bottom(); y += tileHeight) {
        for (int64_t x = box.x; x < box.right(); x += tileWidth) {
            const PixelRect tile{static_cast<int32_t>(x), static_cast<int32_t>(y), tileWidth, tileHeight};
            renderCoverage(shape, intersection(tile, box), state_.shouldAntialias, *mask_);
            blendMask(*mask_, color, *bitmap_);
        }
    }
}

void NSGraphicsContext::drawBitmap(const NSBitmapImageRep& bitmap, int32_t x, int32_t y) {
    if (!isRGBA8(bitmap) || &bitmap == bitmap_.get()) return;
    blendBitmap(bitmap, x, y, *bitmap_);
}

}  // namespace qz
