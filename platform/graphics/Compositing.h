#pragma once

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// A colour in 8 bits a component, not premultiplied.
struct StraightColor {
    uint8_t red = 0, green = 0, blue = 0, alpha = 255;
};

/// Whether pixels are four bytes R, G, B, A: the only bitmaps that are drawn into and from.
bool isRGBA8(const NSBitmapImageRep& bitmap);

// Source over destination in premultiplied RGBA8. Every result is the exact value rounded to the nearest integer, once;
// colour never exceeds alpha when it did not before. What lies outside the target is skipped.

/// Lays a colour over the target as far as the mask covers.
void blendMask(const CoverageMask& mask, StraightColor color, NSBitmapImageRep& target);

/// Lays a bitmap over the target, its top left pixel on the pixel (x, y). Not the target itself. Colour beyond alpha in
/// the source saturates.
void blendBitmap(const NSBitmapImageRep& source, int32_t x, int32_t y, NSBitmapImageRep& target);

}  // namespace qz
