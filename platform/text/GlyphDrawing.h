#pragma once

#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/GlyphCache.h"
#include "platform/text/NSFont.h"

namespace qz {

// Every glyph is drawn with its origin on a grid of an eighth of a pixel, kept image or not, so that a letter that
// comes again hits the cache and one that moves by tenths of a pixel is never more than a sixteenth off, which no eye
// sees.

/// A glyph where it is to be drawn. `origin` lies on its baseline, in points of a space whose y grows downward.
struct GlyphAtPlace {
    NSGlyph glyph = 0;
    Ref<NSFont> font;
    NSPoint origin;
    /// Points to the right for each point above the baseline.
    float obliqueness = 0;
};

/// The outline where the glyph is drawn, that of a colour glyph too; empty for a control glyph.
NSBezierPath outlineOfGlyph(const GlyphAtPlace& place);

/// The pen that goes along an outline, in points.
struct GlyphStroke {
    float width = 0;
    NSLineCapStyle lineCap = NSLineCapStyle::butt;
    NSLineJoinStyle lineJoin = NSLineJoinStyle::miter;
    float miterLimit = 10;
    /// As `NSBezierPath::flatness`, of the joins.
    float flatness = 0.6f;
};

/// Draws the glyph into the context, in its colour. A colour glyph comes in its own colours, as translucent as the
/// context's.
void drawGlyph(NSGraphicsContext& context, const GlyphAtPlace& place, GlyphCache& cache);
/// Fills the outline, that of a colour glyph too.
void fillGlyph(NSGraphicsContext& context, const GlyphAtPlace& place, GlyphCache& cache);
/// Flattens the outline, strokes it and fills it: the glyph widened by half the pen's width.
void strokeAndFillGlyph(NSGraphicsContext& context, const GlyphAtPlace& place, const GlyphStroke& stroke,
                        GlyphCache& cache);

}  // namespace qz
