#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "platform/graphics/PictureCanvas.h"

namespace qz {

/// Walks the paint graph of a COLR version 1 glyph (OpenType 1.9, "COLR - Color Table"). Font units, y upward.
///
/// Reads the table itself: Debian 12 builds FreeType without its interface to version 1 graphs, and HarfBuzz has one
/// from 7.0 on. Variable paints use the font's default instance. Since a font may nest paints endlessly, or reuse them
/// again and again, their depth and number are bounded; anything beyond, or outside the table, is left out.
class ColourPaint {
public:
    /// A colour of the palette by index; 0xFFFF is the text's colour.
    using Palette = std::function<StraightColor(uint16_t)>;
    using Outlines = std::function<NSBezierPath(uint32_t glyph)>;

    /// `table` must outlive this object.
    ColourPaint(std::span<const uint8_t> table, Palette palette, Outlines outlines)
        : table_(table), palette_(std::move(palette)), outlines_(std::move(outlines)) {}

    bool hasGlyph(uint32_t glyph) const { return paintOfGlyph(glyph) != 0; }
    /// Returns false if the glyph has no paints.
    bool paintGlyph(uint32_t glyph, PictureCanvas& canvas);
    /// The outlines of everything painted; no value if the glyph has no paints.
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
    /// The offset of a paint or table that a paint refers to relative to its own start; 0 if there is none.
    uint64_t childOf(uint64_t paint, uint64_t offset) const;

    /// Offsets of paints count from the start of the table; 0 means no paint.
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
    // The picture to paint; if null, the walk collects the silhouette.
    PictureCanvas* canvas_ = nullptr;
    NSBezierPath silhouette_;
    int paintsLeft_ = 0;
};

}  // namespace qz
