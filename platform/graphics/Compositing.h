#pragma once

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/StraightColor.h"

namespace qz {

/// Whether pixels are four bytes R, G, B, A: the only bitmaps that are drawn into and from.
bool isRGBA8(const NSBitmapImageRep& bitmap);

// Source over destination in premultiplied RGBA8; colour never exceeds alpha when it did not before. What lies outside
// the target is skipped, and so is what a source's `drawnBox` leaves out. Each returns the box of what may have
// changed.

/// Lays a colour over the target as far as the mask, moved by (dx, dy) pixels, covers. Alpha times coverage is rounded
/// to 8 bits, and the mix with what is there to the nearest integer: exact for an opaque colour, otherwise within 1.
PixelRect blendMask(const CoverageMask& mask, StraightColor color, NSBitmapImageRep& target, int32_t dx = 0,
                    int32_t dy = 0);

/// Lays a bitmap over the target, its top left pixel on the pixel (x, y), thinned to `alpha` of 255. Not the target
/// itself. Rounded as above, `alpha` in the place of the coverage. Colour beyond alpha in the source saturates.
PixelRect blendBitmap(const NSBitmapImageRep& source, int32_t x, int32_t y, NSBitmapImageRep& target,
                      uint8_t alpha = 255);

}  // namespace qz
