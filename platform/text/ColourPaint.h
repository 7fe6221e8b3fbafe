#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "platform/graphics/PictureCanvas.h"

namespace qz {

/// Walks the graph of paints of a COLR version 1 glyph (OpenType 1.9, "COLR - Color Table"). Font units, y upward.
///
/// Reads the table itself: Debian 12 builds FreeType without its interface to version 1 graphs, and HarfBuzz has one
/// from 7.0 on. Variable paints are those of the font's default instance. A font may nest paints without end, or name
/// the same ones again and again: the depth and the number of paints are bounded, and what lies beyond, or outside the
/// table, is left out.
class ColourPaint {
public:
    /// A colour of the palette by its index; 0xFFFF is the text's own.
    using Palette = std::function<StraightColor(uint16_t)>;
    using Outlines = std::function<NSBezierPath(uint32_t glyph)>;

    /// `table` outlives this.
    ColourPaint(std::span<const uint8_t> table, Palette palette, Outlines outlines)
        : table_(table), palette_(std::move(palette)), outlines_(std::move(outlines)) {}

    bool hasGlyph(uint32_t glyph) const { return paintOfGlyph(glyph) != 0; }
    /// False when the glyph has no paints.
    bool paintGlyph(uint32_t glyph, PictureCanvas& canvas);
    /// The outlines of everything that is painted; empty if the glyph has no paints.
    std::optional<NSBezierPath> silhouetteOfGlyph(uint32_t glyph);

private:
    static constexpr int kDepthMax = 64;
    static constexpr int kPaintsMax = 4096;

    // Big-endian numbers at an offset from the start of the table; 0 beyond its end.
    uint32_t number(uint64_t offset, int bytes) const;
    double signed16(uint64_t offset) const;
    double fixed16(uint64_t offset) const;  ///< 2.14
    double fixed32(uint64_t offset) const;  ///< 16.16
    NSBezierPath::Point pointAt(uint64_t offset) const;
    StraightColor colorAt(uint64_t offset) const;
    /// The place of a paint or table that a paint names by a distance from its own start; 0 if it names nothing.
    uint64_t childOf(uint64_t paint, uint64_t offset) const;

    /// All places of paints count from the start of the table; 0 stands for no paint.
    uint64_t paintOfGlyph(uint32_t glyph) const;
    bool walkGlyph(uint32_t glyph);
    void walk(uint64_t paint, const NSAffineTransform& toRoot, int depth);
    void walkLayers(uint64_t paint, const NSAffineTransform& toRoot, int depth);
    void walkOutline(uint64_t paint, const NSAffineTransform& toRoot, int depth);
    void walkTransformed(uint64_t paint, const NSAffineTransform& transform, const NSAffineTransform& toRoot,
                         int depth);
    void walkComposite(uint64_t paint, const NSAffineTransform& toRoot, int depth);
    std::optional<NSAffineTransform> transformOf(uint64_t paint, int format) const;
    std::optional<Gradient> gradientOf(uint64_t paint, int format) const;

    const std::span<const uint8_t> table_;
    const Palette palette_;
    const Outlines outlines_;
    // What the walk is for: a picture, or without one the silhouette.
    PictureCanvas* canvas_ = nullptr;
    NSBezierPath silhouette_;
    int paintsLeft_ = 0;
};

}  // namespace qz
