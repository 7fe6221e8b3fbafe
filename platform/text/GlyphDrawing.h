#pragma once

#include <span>

#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/GlyphCache.h"

namespace qz {

// Every glyph, cached or not, is drawn with its origin on a grid of eighths of a pixel, so that repeated letters hit
// the cache; the error of at most a sixteenth of a pixel is invisible.

/// A glyph and its place. `origin` is on the baseline, in points of a space with y growing downward.
struct GlyphAtPlace {
    NSGlyph glyph = 0;
    Ref<NSFont> font;
    NSPoint origin;
    /// Points to the right for each point above the baseline.
    float obliqueness = 0;
};

/// The outline at the glyph's place, also for a colour glyph; empty for a control glyph.
NSBezierPath outlineOfGlyph(const GlyphAtPlace& place);

/// The pen for stroking an outline, in points.
struct GlyphStroke {
    float width = 0;
    NSLineCapStyle lineCap = NSLineCapStyle::butt;
    NSLineJoinStyle lineJoin = NSLineJoinStyle::miter;
    float miterLimit = 10;
    /// As `NSBezierPath::flatness`, for the joins.
    float flatness = 0.6f;
};

// Each function draws glyphs into the context in its colour, one over the other. Pass glyphs with the same look
// together.

/// A colour glyph keeps its own colours, with the opacity of the context's.
void drawGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, GlyphCache& cache);
/// Fills the outlines, including those of colour glyphs.
void fillGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, GlyphCache& cache);
/// Flattens the outlines, strokes and fills them: glyphs widened by half the pen's width.
void strokeAndFillGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, const GlyphStroke& stroke,
                         GlyphCache& cache);

}  // namespace qz
