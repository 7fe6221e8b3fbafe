#pragma once

#include "QzAnno/platform/graphics/NSImage.h"

namespace qz {

/// Converts pictures to bitmaps: premultiplied RGBA, bytes in the order R, G, B, A, rows from the top, with the
/// picture's size truncated to whole points. Returns null, with a log line, if there are no pixels or too many.
class QzTextRender {
public:
    /// Copies the pixels.
    static Ref<NSBitmapImageRep> rasterizeImage(const NSImage& image);
    /// The same for an image that the caller gives up: takes its pixels if it has no other owner and a size in whole
    /// points.
    static Ref<NSBitmapImageRep> rasterizeImage(Ref<NSImage>&& image);
    /// Makes a copy with the representation's size in points: extra pixels are cut, missing ones are clear. A
    /// representation that is not premultiplied RGBA gives clear pixels.
    static Ref<NSBitmapImageRep> rasterizeImageRep(const NSBitmapImageRep& imageRep);
};

}  // namespace qz
