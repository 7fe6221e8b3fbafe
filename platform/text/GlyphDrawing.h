#pragma once

#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/NSColor.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/NSFont.h"

namespace qz {

/// A glyph where it is to be drawn. `origin` lies on its baseline, in points of a space whose y grows downward.
struct GlyphAtPlace {
    NSGlyph glyph = 0;
    Ref<NSFont> font;
    NSPoint origin;
    /// Points to the right for each point above the baseline.
    float obliqueness = 0;
};

/// The outline of the glyph, upright and at its place. Empty for glyphs that show nothing.
NSBezierPath outlineOfGlyph(const GlyphAtPlace& place);

/// Draws the glyph into the context, in a colour.
void drawGlyph(NSGraphicsContext& context, const GlyphAtPlace& place, const Ref<NSColor>& color);

}  // namespace qz
