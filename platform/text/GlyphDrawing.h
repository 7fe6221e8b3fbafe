#pragma once

#include <span>

#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/GlyphCache.h"

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

// Each draws glyphs into the context in its colour, one over the other; those that are to look alike together.

/// A colour glyph comes in its own colours, as translucent as the context's.
void drawGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, GlyphCache& cache);
/// Fills the outlines, those of colour glyphs too.
void fillGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, GlyphCache& cache);
/// Flattens the outlines, strokes and fills them: glyphs widened by half the pen's width.
void strokeAndFillGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, const GlyphStroke& stroke,
                         GlyphCache& cache);

}  // namespace qz
