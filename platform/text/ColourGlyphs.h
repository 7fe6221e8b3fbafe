#pragma once

#include <memory>
#include <span>

#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/Compositing.h"
#include "platform/graphics/DeviceShape.h"

namespace qz {

/// The colour glyphs of a font: outline layers with a palette (COLR version 0), paint graphs (COLR version 1), or
/// bitmaps (CBDT, sbix). SVG glyphs are not supported and show their plain outlines.
///
/// Lengths are in font units with y growing upward. May be used from several threads; locks once per font.
class ColourGlyphs {
public:
    /// `file` must outlive this object. Nothing is read until the first glyph is requested.
    ColourGlyphs(std::span<const uint8_t> file, int index, double unitsPerEm);
    ~ColourGlyphs();

    bool hasGlyph(NSGlyph glyph) const;
    /// The border of the visible glyph: its painted outlines, or the traced edge of its largest bitmap. Empty for a
    /// glyph without colours.
    NSBezierPath silhouette(NSGlyph glyph) const;
    /// The box of the visible glyph, transformed by `toDevice`; empty for a glyph without colours.
    DeviceBox bounds(NSGlyph glyph, const NSAffineTransform& toDevice) const;
    /// The part of the glyph, transformed by `toDevice`, inside the pixels of `box`, as premultiplied RGBA.
    /// `foreground` is used for paints that request the text's colour. Null for a glyph without colours, or if memory
    /// has run out.
    Ref<NSBitmapImageRep> picture(NSGlyph glyph, const NSAffineTransform& toDevice, StraightColor foreground,
                                  const PixelRect& box) const;

private:
    class Source;
    const std::unique_ptr<Source> source_;
};

}  // namespace qz
