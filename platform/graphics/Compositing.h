#pragma once

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/StraightColor.h"

namespace qz {

/// Whether pixels are four bytes R, G, B, A: the only supported format for drawing.
bool isRGBA8(const NSBitmapImageRep& bitmap);

// Source over destination in premultiplied RGBA8; colour never exceeds alpha unless it did before. Pixels outside the
// target, or outside the source's `drawnBox`, are skipped. Each function returns the box of what may have changed.

/// Blends a colour over the target through the mask, moved by (dx, dy) pixels. Alpha times coverage is rounded to 8
/// bits, and the blend to the nearest integer: exact for an opaque colour, otherwise within 1.
PixelRect blendMask(const CoverageMask& mask, StraightColor color, NSBitmapImageRep& target, int32_t dx = 0,
                    int32_t dy = 0);

/// Blends a bitmap, which must not be the target, over the target with its top left pixel at (x, y) and an opacity of
/// `alpha` of 255. Rounds as above, with `alpha` as coverage. Colour above alpha in the source saturates.
PixelRect blendBitmap(const NSBitmapImageRep& source, int32_t x, int32_t y, NSBitmapImageRep& target,
                      uint8_t alpha = 255);

}  // namespace qz
