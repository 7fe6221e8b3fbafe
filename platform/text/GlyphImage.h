#pragma once

#include <array>
#include <bit>
#include <compare>

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/NSBitmapImageRep.h"
#include "platform/text/NSFont.h"

namespace qz {

/// Which part of a glyph an image shows: its outline filled, stroked or both, or a picture in colours of its own.
enum class GlyphPart : uint8_t { fill, stroke, strokeAndFill, picture };

/// All that changes the pixels of a glyph's image. Whole words without gaps, so that it can be hashed as it lies.
struct GlyphKey {
    /// Kept alive by the image's font.
    const FontFace* face = nullptr;
    NSGlyph glyph = 0;
    float pointSize = 0;
    /// From points, y downward, to pixels.
    double m11 = 1, m12 = 0, m21 = 0, m22 = 1;
    float obliqueness = 0;
    /// Of the stroke, in points; with its other measures 0 for a part without one.
    float strokeWidth = 0, flatness = 0, miterLimit = 0;
    GlyphPart part = GlyphPart::fill;
    uint8_t lineCap = 0, lineJoin = 0;
    bool antialias = true;
    /// Where the origin lies in its pixel, in parts of `kPhases`.
    uint8_t phaseX = 0, phaseY = 0;
    /// Of the text's colour, for a picture that asks for it.
    uint8_t red = 0, green = 0;
    uint32_t blue = 0;
    uint32_t unused = 0;

    friend bool operator==(const GlyphKey&, const GlyphKey&) = default;
};
static_assert(sizeof(GlyphKey) % sizeof(uint64_t) == 0);

struct GlyphKeyHash {
    size_t operator()(const GlyphKey& key) const {
        uint64_t hash = 0;
        for (const uint64_t word : std::bit_cast<std::array<uint64_t, sizeof(GlyphKey) / sizeof(uint64_t)>>(key)) {
            // Of the 64-bit finaliser of MurmurHash3.
            hash = (hash ^ word) * 0xff51afd7ed558ccd;
            hash ^= hash >> 33;
        }
        return static_cast<size_t>(hash);
    }
};

/// A glyph as it is laid on a bitmap, with its origin in the pixel (0, 0): a mask, or a picture whose corner lies at
/// the mask's. Neither for a glyph that shows nothing.
struct GlyphImage {
    Ref<NSFont> font;
    CoverageMask mask;
    Ref<NSBitmapImageRep> picture;

    uint64_t bytes() const {
        const uint64_t pixels = picture ? uint64_t(picture->bytesPerRow()) * uint64_t(picture->pixelsHigh()) : 0;
        return pixels + mask.bytes.size();
    }
};

}  // namespace qz
