#include <cmath>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/render/ExpandRectConstrainedBy.h"
#include "QzAnno_AnnotatedTextFramework/render/QzTextRender.h"
#include "platform/graphics/NSAffineTransform.h"
#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

// Room around the text box for layers that extend beyond the glyphs, in points.
constexpr int32_t kBoxGrowth = 10;

// Both restore the former context however drawing ends; memory may run out during it.

class ImageFocus {
public:
    explicit ImageFocus(NSImage& image) : image_(image) { image_.lockFocus(); }
    ~ImageFocus() { image_.unlockFocus(); }
    ImageFocus(const ImageFocus&) = delete;
    ImageFocus& operator=(const ImageFocus&) = delete;

private:
    NSImage& image_;
};

class CurrentContext {
public:
    explicit CurrentContext(Ref<NSGraphicsContext> context) : former_(NSGraphicsContext::currentContext()) {
        NSGraphicsContext::setCurrentContext(std::move(context));
    }
    ~CurrentContext() { NSGraphicsContext::setCurrentContext(former_); }
    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;

private:
    const Ref<NSGraphicsContext> former_;
};

}  // namespace

NSRect QzAnnoStringToScreen::placeInFullScreen(bool fullScreen, NSPoint& offset) {
    if (textContainer_->fullscreen() != fullScreen) {
        textContainer_->setFullscreen(fullScreen);
        available_ = false;
    }
    if (!available_) build();
    NSRect place = {{0, 0}, textContainer_->containerSize()};
    if (!fullScreen) {
        place = ExpandRectConstrainedBy(textContainer_->textBox(), kBoxGrowth, kBoxGrowth, kBoxGrowth, kBoxGrowth,
                                        textContainer_->screenSize(), &offset);
    }
    place.size = {std::round(place.size.width), std::round(place.size.height)};
    return place;
}

NSRect QzAnnoStringToScreen::placeInFullScreen(bool fullScreen) {
    NSPoint offset;
    return placeInFullScreen(fullScreen, offset);
}

void QzAnnoStringToScreen::drawGlyphsAtPoint(NSPoint offset) {
    const Range glyphs = layoutManager_->glyphRangeForTextContainer(*textContainer_);
    if (glyphs.length == 0) return;
    NSAffineTransform scale;
    scale.scaleXBy(datasize_.width / screensize_.width, datasize_.height / screensize_.height);
    scale.concat();
    layoutManager_->drawGlyphsForGlyphRange(glyphs, offset);
}

Ref<NSImage> QzAnnoStringToScreen::imageInFullScreen(bool fullScreen, NSRect* bbox) {
    NSPoint offset;
    const NSRect place = placeInFullScreen(fullScreen, offset);
    if (bbox) *bbox = place;
    const Ref<NSImage> image = NSEqualSizes(screensize_, {}) ? nullptr : NSImage::initWithSize(place.size);
    if (!image) {
        NSLog("No image of %@ points can be made\n", {NSStringFromSize(place.size)});
        return {};
    }
    image->setFlipped(true);
    {
        const ImageFocus focus(*image);
        drawGlyphsAtPoint(offset);
    }
    image->setFlipped(false);
    return image;
}

Ref<NSBitmapImageRep> QzAnnoStringToScreen::bitmapInFullScreen(bool fullScreen, NSRect* bbox) {
    Ref<NSImage> image = imageInFullScreen(fullScreen, bbox);
    return image ? QzTextRender::rasterizeImage(std::move(image)) : Ref<NSBitmapImageRep>();
}

bool QzAnnoStringToScreen::drawInFullScreen(bool fullScreen, const Ref<NSBitmapImageRep>& intoBitmap, NSRect* bbox,
                                            PixelRect* changed) {
    const Ref<NSGraphicsContext> context = NSGraphicsContext::graphicsContextWithBitmapImageRep(intoBitmap, true);
    if (!context || NSEqualSizes(screensize_, {})) return false;
    NSPoint offset;
    const NSRect place = placeInFullScreen(fullScreen, offset);
    if (bbox) *bbox = place;
    const CurrentContext current(context);
    drawGlyphsAtPoint(offset);
    if (changed) *changed = context->changedBox();
    return true;
}

bool QzAnnoStringToScreen::drawInFullScreen(bool fullScreen, const PixelBuffer& intoBuffer, NSRect* bbox,
                                            PixelRect* changed) {
    if (!intoBuffer.pixels) return false;
    const Ref<NSBitmapImageRep> bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(
        intoBuffer.pixels,
        {.pixelsWide = intoBuffer.width, .pixelsHigh = intoBuffer.height, .bytesPerRow = intoBuffer.bytesPerRow});
    return bitmap && drawInFullScreen(fullScreen, bitmap, bbox, changed);
}

}  // namespace qz
