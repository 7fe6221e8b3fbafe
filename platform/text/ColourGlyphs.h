#pragma once

#include <memory>
#include <span>

#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/Compositing.h"
#include "platform/graphics/DeviceShape.h"

namespace qz {

/// The glyphs of a font that have colours of their own: layers of outlines with a palette (COLR version 0), graphs of
/// paints (COLR version 1), or bitmaps (CBDT, sbix). SVG documents are not drawn: such a glyph shows its plain outline.
///
/// Lengths are in font units with y growing upward. May be used from several threads; takes one lock per font.
class ColourGlyphs {
public:
    /// `file` outlives this; nothing is read before the first glyph is asked for.
    ColourGlyphs(std::span<const uint8_t> file, int index, double unitsPerEm);
    ~ColourGlyphs();

    bool hasGlyph(NSGlyph glyph) const;
    /// The border of what the glyph shows: the outlines it paints, or the traced edge of its largest bitmap. Empty for
    /// a glyph without colours.
    NSBezierPath silhouette(NSGlyph glyph) const;
    /// The box of what the glyph shows, in the space that `toDevice` leads to; empty for a glyph without colours.
    DeviceBox bounds(NSGlyph glyph, const NSAffineTransform& toDevice) const;
    /// What of the glyph falls into `box`, pixels of a space that `toDevice` leads to; premultiplied RGBA. `foreground`
    /// serves paints that ask for the text's colour. None for a glyph without colours, or without memory.
    Ref<NSBitmapImageRep> picture(NSGlyph glyph, const NSAffineTransform& toDevice, StraightColor foreground,
                                  const PixelRect& box) const;

private:
    class Source;
    const std::unique_ptr<Source> source_;
};

}  // namespace qz
