#pragma once

#include <array>
#include <bit>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/CoverageMask.h"

namespace qz {

/// The part of a glyph in an image: its outline filled, stroked, or both; both as drawn in a translucent colour, first
/// stroked and then filled, including alpha; or a colour picture.
enum class GlyphPart : uint8_t { fill, stroke, strokeAndFill, strokeThenFill, picture };

/// Everything that affects the pixels of a glyph's image. Whole words without padding, so that its memory can be hashed
/// directly.
struct GlyphKey {
    /// Kept alive by the image's font.
    const FontFace* face = nullptr;
    NSGlyph glyph = 0;
    float pointSize = 0;
    /// From points, y downward, to pixels.
    double m11 = 1, m12 = 0, m21 = 0, m22 = 1;
    float obliqueness = 0;
    /// The stroke's measures, in points; 0 for a part without a stroke.
    float strokeWidth = 0, flatness = 0, miterLimit = 0;
    GlyphPart part = GlyphPart::fill;
    uint8_t lineCap = 0, lineJoin = 0;
    bool antialias = true;
    /// The position of the origin in its pixel, in units of 1 / `kPhases`.
    uint8_t phaseX = 0, phaseY = 0;
    uint16_t unused = 0;
    /// The text's colour, for a picture that uses it.
    uint8_t red = 0, green = 0, blue = 0;
    /// For strokeThenFill.
    uint8_t alpha = 255;
    uint32_t unusedToo = 0;

    static constexpr size_t kWords = 10;
    std::array<uint64_t, kWords> words() const;
    friend bool operator==(const GlyphKey& a, const GlyphKey& b) {
        // Compares all words without branching, since compared keys are usually equal.
        uint64_t differences = 0;
        const auto left = a.words(), right = b.words();
        for (size_t i = 0; i < kWords; ++i) differences |= left[i] ^ right[i];
        return differences == 0;
    }
};
static_assert(sizeof(GlyphKey) == GlyphKey::kWords * sizeof(uint64_t));

inline std::array<uint64_t, GlyphKey::kWords> GlyphKey::words() const {
    return std::bit_cast<std::array<uint64_t, kWords>>(*this);
}

struct GlyphKeyHash {
    size_t operator()(const GlyphKey& key) const {
        // A sum of independent products, and the final steps of MurmurHash3.
        uint64_t hash = 0, factor = 0x9e3779b97f4a7c15;
        for (const uint64_t word : key.words()) {
            hash += (word ^ word >> 32) * factor;
            factor += 0x3c6ef372fe94f82a;  // stays odd
        }
        hash = (hash ^ hash >> 33) * 0xff51afd7ed558ccd;
        hash ^= hash >> 33;
        return static_cast<size_t>(hash);
    }
};

/// A glyph ready for blending, with its origin in pixel (0, 0): a mask, or a picture at the corner of the mask's box.
/// Neither if the glyph is invisible.
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
