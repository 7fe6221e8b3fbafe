#include "platform/graphics/Compositing.h"

#include "platform/graphics/PixelRect.h"
#include "platform/graphics/PixelRows.h"

namespace qz {
namespace {

uint8_t* pixelWithin(NSBitmapImageRep& bitmap, int32_t x, int32_t y) {
    return bitmap.rowWithin(y) + size_t{4} * static_cast<size_t>(x);
}

}  // namespace

bool isRGBA8(const NSBitmapImageRep& bitmap) {
    return bitmap.bitsPerSample() == 8 && bitmap.samplesPerPixel() == 4 && bitmap.bitsPerPixel() == 32 &&
           bitmap.hasAlpha();
}

PixelRect blendMask(const CoverageMask& mask, StraightColor color, NSBitmapImageRep& target, int32_t dx, int32_t dy) {
    const PixelRect visible = intersectionOfMoved(mask.box, dx, dy, target.bounds());
    if (color.alpha == 0 || visible.isEmpty()) return {};
    target.noteDrawn(visible);
    const uint8_t opaque[4] = {color.red, color.green, color.blue, 255};
    const int64_t left = int64_t{visible.x} - dx - mask.box.x, top = int64_t{visible.y} - dy - mask.box.y;
    // Beyond the mask's edge its rows hold zeros, which change nothing.
    const size_t whole = (static_cast<size_t>(visible.width) + kPixelBlock - 1) / kPixelBlock * kPixelBlock;
    const bool hasRoom = int64_t{visible.x} + static_cast<int64_t>(whole) <= target.pixelsWide() &&
                         left + static_cast<int64_t>(whole) <= mask.stride;
    const CoverageRows rows = {.coverage = mask.row(static_cast<int32_t>(top)) + left,
                               .coverageStride = static_cast<size_t>(mask.stride),
                               .pixels = pixelWithin(target, visible.x, visible.y),
                               .pixelStride = static_cast<size_t>(target.bytesPerRow()),
                               .width = hasRoom ? whole : static_cast<size_t>(visible.width),
                               .height = static_cast<size_t>(visible.height)};
    pixelRows().blendCoverage(rows, opaque, color.alpha);
    return visible;
}

PixelRect blendBitmap(const NSBitmapImageRep& source, int32_t x, int32_t y, NSBitmapImageRep& target, uint8_t alpha) {
    const PixelRect visible = intersectionOfMoved(source.drawnBox(), x, y, target.bounds());
    if (alpha == 0 || visible.isEmpty()) return {};
    target.noteDrawn(visible);
    const int64_t left = int64_t{visible.x} - x, top = int64_t{visible.y} - y;
    for (int32_t i = 0; i < visible.height; ++i) {
        pixelRows().blendPixels(source.row(static_cast<int32_t>(top + i)) + 4 * left,
                                static_cast<size_t>(visible.width), alpha,
                                pixelWithin(target, visible.x, visible.y + i));
    }
    return visible;
}

}  // namespace qz
