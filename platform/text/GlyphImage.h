#pragma once

#include <array>
#include <bit>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/CoverageMask.h"

namespace qz {

/// Which part of a glyph an image shows: its outline filled, stroked or both; both as a translucent colour covers them,
/// first stroked and then filled, alpha and all; or a picture in colours of its own.
enum class GlyphPart : uint8_t { fill, stroke, strokeAndFill, strokeThenFill, picture };

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
    uint16_t unused = 0;
    /// Of the text's colour, for a picture that asks for it.
    uint8_t red = 0, green = 0, blue = 0;
    /// For strokeThenFill.
    uint8_t alpha = 255;
    uint32_t unusedToo = 0;

    static constexpr size_t kWords = 10;
    std::array<uint64_t, kWords> words() const;
    friend bool operator==(const GlyphKey& a, const GlyphKey& b) {
        // All words without a branch: keys that are compared are most often equal.
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
        // A sum of products, which do not wait for each other, and the last steps of MurmurHash3.
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
