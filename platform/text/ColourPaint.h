#pragma once

#include <functional>
#include <optional>

#include <ft2build.h>
#include FT_COLOR_H

#include "platform/graphics/PictureCanvas.h"

namespace qz {

/// Walks the graph of paints of a COLR version 1 glyph (OpenType 1.9, "COLR - Color Table"). Font units, y upward.
///
/// A font may nest paints without end, or name the same ones again and again: the depth and the number of paints are
/// bounded, and what lies beyond is left out.
class ColourPaint {
public:
    /// A colour of the palette by its index; 0xFFFF is the text's own.
    using Palette = std::function<StraightColor(uint16_t)>;
    using Outlines = std::function<NSBezierPath(uint32_t glyph)>;

    ColourPaint(FT_Face face, Palette palette, Outlines outlines)
        : face_(face), palette_(std::move(palette)), outlines_(std::move(outlines)) {}

    /// False when the glyph has no paints.
    bool paintGlyph(uint32_t glyph, PictureCanvas& canvas);
    /// The outlines of everything that is painted. None when the glyph has no paints.
    std::optional<NSBezierPath> silhouetteOfGlyph(uint32_t glyph);

private:
    static constexpr int kDepthMax = 64;
    static constexpr int kPaintsMax = 4096;

    bool begin(uint32_t glyph);
    void walk(FT_OpaquePaint opaque, const NSAffineTransform& toRoot, int depth);
    void walkTransformed(FT_OpaquePaint opaque, const NSAffineTransform& transform, const NSAffineTransform& toRoot,
                         int depth);
    void walkOutline(const FT_PaintGlyph& paint, const NSAffineTransform& toRoot, int depth);
    void walkComposite(const FT_PaintComposite& paint, const NSAffineTransform& toRoot, int depth);
    void paint(Gradient gradient, FT_ColorLine& line);
    StraightColor colorOf(const FT_ColorIndex& index) const;

    const FT_Face face_;
    const Palette palette_;
    const Outlines outlines_;
    // What the walk is for: one of the two.
    PictureCanvas* canvas_ = nullptr;
    NSBezierPath silhouette_;
    int paintsLeft_ = 0;
};

}  // namespace qz
