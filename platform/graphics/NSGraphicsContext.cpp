#include "platform/graphics/NSGraphicsContext.h"

#include <algorithm>

#include "platform/graphics/Compositing.h"
#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/DeviceShape.h"
#include "platform/graphics/PictureCanvas.h"
#include "platform/graphics/PixelRect.h"

namespace qz {
namespace {

// Larger shapes are drawn in bands of rows, so that a mask never exceeds this.
constexpr int32_t kMaskBytesMax = 4 << 20;

constexpr PixelRect kAnyPixels{-(1 << 30), -(1 << 30), INT32_MAX, INT32_MAX};

thread_local Ref<NSGraphicsContext> currentOfThread;

}  // namespace

NSGraphicsContext::NSGraphicsContext(Ref<NSBitmapImageRep> bitmap, const NSAffineTransform& transform)
    : bitmap_(std::move(bitmap)),
      state_{.paint = StraightColor{}, .transform = transform},
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

void NSGraphicsContext::setColor(const Ref<NSColor>& color) {
    state_.paint.reset();
    if (color) state_.paint = straightColorOf(*color);
}

void NSGraphicsContext::fill(const NSBezierPath& path) {
    const DeviceShape shape = DeviceShape::fillOf(path, state_.transform);
    drawShapes({&shape, 1}, 0, 0);
}

void NSGraphicsContext::stroke(const NSBezierPath& path) {
    const DeviceShape shape = DeviceShape::strokeOf(path, state_.transform);
    drawShapes({&shape, 1}, 0, 0);
}

void NSGraphicsContext::drawShapes(std::span<const DeviceShape> shapes, int32_t dx, int32_t dy) {
    if (!state_.paint) return;
    const auto* const color = std::get_if<StraightColor>(&*state_.paint);
    if (color && color->alpha == 0) return;
    const PixelRect within = intersectionOfMoved(bitmap_->bounds(), -dx, -dy, kAnyPixels);
    PixelRect box;
    for (const DeviceShape& shape : shapes) box = unionOf(box, shape.pixelBounds(within));
    if (box.isEmpty()) return;
    const int32_t tileWidth = std::min(box.width, kCoverageSideMax);
    const int32_t tileHeight = std::min(kMaskBytesMax / tileWidth, kCoverageSideMax);
    for (int64_t y = box.y; y < box.bottom(); y += tileHeight) {
        for (int64_t x = box.x; x < box.right(); x += tileWidth) {
            const PixelRect tile{static_cast<int32_t>(x), static_cast<int32_t>(y), tileWidth, tileHeight};
            renderCoverage(shapes, intersection(tile, box), state_.shouldAntialias, *mask_);
            drawMask(*mask_, dx, dy);
        }
    }
}

void NSGraphicsContext::drawMask(const CoverageMask& mask, int32_t dx, int32_t dy, bool holdsAlpha) {
    if (!state_.paint) return;
    if (gathered_) return gather(mask, dx, dy);
    if (const auto* const single = std::get_if<StraightColor>(&*state_.paint)) {
        StraightColor color = *single;
        if (holdsAlpha) color.alpha = 255;
        changedBox_ = unionOf(changedBox_, blendMask(mask, color, *bitmap_, dx, dy));
        return;
    }
    const PixelRect box = intersectionOfMoved(mask.box, dx, dy, bitmap_->bounds());
    if (box.isEmpty()) return;
    PictureCanvas canvas(box);
    canvas.concat(state_.transform);
    canvas.paint(*state_.paint, mask, dx, dy);
    if (const auto picture = canvas.picture()) drawBitmap(*picture, box.x, box.y);
}

void NSGraphicsContext::drawBitmap(const NSBitmapImageRep& bitmap, int32_t x, int32_t y, uint8_t alpha) {
    if (!isRGBA8(bitmap) || &bitmap == bitmap_.get()) return;
    changedBox_ = unionOf(changedBox_, blendBitmap(bitmap, x, y, *bitmap_, alpha));
}

void NSGraphicsContext::beginGathering() {
    gathered_ = std::make_unique<CoverageMask>();
}

// A title's layer is a strip of the screen, so the mask grows to the drawn area, in steps large enough to keep growing
// cheap.
void NSGraphicsContext::gather(const CoverageMask& mask, int32_t dx, int32_t dy) {
    const PixelRect box = intersectionOfMoved(mask.box, dx, dy, bitmap_->bounds());
    if (box.isEmpty()) return;
    const PixelRect needed = unionOf(gathered_->box, box);
    if (needed != gathered_->box) {
        const PixelRect roomy{needed.x - needed.width / 2, needed.y - needed.height / 2, 2 * needed.width,
                              2 * needed.height};
        CoverageMask grown = CoverageMask::emptyOf(intersection(roomy, bitmap_->bounds()));
        uniteMasks(*gathered_, 0, 0, grown);
        *gathered_ = std::move(grown);
    }
    uniteMasks(mask, dx, dy, *gathered_);
}

void NSGraphicsContext::endGathering() {
    const std::unique_ptr<CoverageMask> gathered = std::move(gathered_);
    if (gathered) drawMask(*gathered, 0, 0);
}

}  // namespace qz
