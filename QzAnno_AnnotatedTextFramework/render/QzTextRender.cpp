#include "QzAnno_AnnotatedTextFramework/render/QzTextRender.h"

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

void reportColorSpace(const NSBitmapImageRep& bitmap) {
    NSLog("Bitmap rep's colorspace name is %@\n", {bitmap.colorSpaceName()});
}

}  // namespace

Ref<NSBitmapImageRep> QzTextRender::rasterizeImage(const NSImage& image) {
    const NSSize size = image.size();
    NSBitmapImageRep::Format format;
    format.pixelsWide = static_cast<int32_t>(size.width);
    format.pixelsHigh = static_cast<int32_t>(size.height);
    format.colorSpaceName = NSCalibratedRGBColorSpace;
    format.bytesPerRow = static_cast<int32_t>(size.width * 4.0f);
    const Ref<NSBitmapImageRep> bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format);
    if (!bitmap) {
        NSLog("No bitmap of %@ points can be made\n", {NSStringFromSize(size)});
        return {};
    }
    NSGraphicsContext::graphicsContextWithBitmapImageRep(bitmap, true)->drawBitmap(*image.bitmap(), 0, 0);
    reportColorSpace(*bitmap);
    return bitmap;
}

Ref<NSBitmapImageRep> QzTextRender::rasterizeImage(Ref<NSImage>&& image) {
    const Ref<NSImage> given = std::move(image);
    const Ref<NSBitmapImageRep>& bitmap = given->bitmap();
    const bool isWhole = static_cast<float>(bitmap->pixelsWide()) == given->size().width &&
                         static_cast<float>(bitmap->pixelsHigh()) == given->size().height;
    if (given.use_count() > 1 || bitmap.use_count() > 1 || !isWhole) return rasterizeImage(*given);
    reportColorSpace(*bitmap);
    return bitmap;
}

Ref<NSBitmapImageRep> QzTextRender::rasterizeImageRep(const NSBitmapImageRep& imageRep) {
    const Ref<NSImage> image = NSImage::initWithSize(imageRep.size());
    if (!image) {
        NSLog("No image of %@ points can be made\n", {NSStringFromSize(imageRep.size())});
        return {};
    }
    NSGraphicsContext::graphicsContextWithBitmapImageRep(image->bitmap(), true)->drawBitmap(imageRep, 0, 0);
    return rasterizeImage(*image);
}

}  // namespace qz
