#pragma once

#include "QzAnno/platform/graphics/NSImage.h"

namespace qz {

/// Turns pictures into bitmaps: premultiplied RGBA, bytes in the order R, G, B, A, rows from the top, of the picture's
/// size with fractions of a point dropped. None, with a log line, when that leaves no pixels or too many.
class QzTextRender {
public:
    /// A copy of the pixels.
    static Ref<NSBitmapImageRep> rasterizeImage(const NSImage& image);
    /// The same of an image that is given away: its pixels are taken over when nobody else holds it and no fraction of
    /// a point is to be dropped.
    static Ref<NSBitmapImageRep> rasterizeImage(Ref<NSImage>&& image);
    /// A copy of the representation's size in points: pixels beyond it are cut, lacking ones are clear. One that is not
    /// of premultiplied RGBA gives clear pixels.
    static Ref<NSBitmapImageRep> rasterizeImageRep(const NSBitmapImageRep& imageRep);
};

}  // namespace qz
