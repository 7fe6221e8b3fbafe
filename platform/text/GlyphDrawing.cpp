#include "platform/text/GlyphDrawing.h"

namespace qz {

NSBezierPath outlineOfGlyph(const GlyphAtPlace& place) {
    NSBezierPath path;
    if (place.glyph == NSControlGlyph || !place.font) return path;
    path.moveToPoint({0, 0});
    appendBezierPathWithGlyph(path, place.glyph, *place.font);
    // Outlines grow upward, the space they are drawn in downward.
    path.transformUsingAffineTransform(
        {.m11 = 1, .m12 = 0, .m21 = place.obliqueness, .m22 = -1, .tX = place.origin.x, .tY = place.origin.y});
    return path;
}

void drawGlyph(NSGraphicsContext& context, const GlyphAtPlace& place, const Ref<NSColor>& color) {
    const NSBezierPath outline = outlineOfGlyph(place);
    if (outline.isEmpty()) return;
    context.setColor(color);
    context.fill(outline);
}

}  // namespace qz
