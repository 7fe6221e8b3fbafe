#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

class FontFace;
class FontLibrary;

/// The index of a glyph in its font.
using NSGlyph = uint32_t;
/// Represents a character that affects layout but shows nothing: a line break, a soft hyphen inside a line.
inline constexpr NSGlyph NSControlGlyph = 0x00FFFFFF;

/// The traits that a run requests in addition to the font's name: with or without. Traits that are not set stay as in
/// the font.
struct FontTraits {
    std::optional<bool> bold;    ///< semibold counts as bold
    std::optional<bool> italic;  ///< oblique counts as italic

    /// Whether no trait is requested.
    bool isEmpty() const { return !bold && !italic; }
    friend bool operator==(const FontTraits&, const FontTraits&) = default;
};

/// A rule under or through text, in points: its upper edge above the baseline (negative below it), and its thickness.
struct FontRule {
    float top = 0;        ///< the upper edge
    float thickness = 0;  ///< never below 0
};

/// A font at a size in points; immutable. May be used from several threads.
class NSFont final : public NSObject {
public:
    /// The library where a font is looked up, which the font keeps; null means `FontLibrary::shared`, the system's
    /// fonts.
    using Library = std::shared_ptr<FontLibrary>;

    /// Finds a font by PostScript name, full name, "family-style" or family (its regular face), in this order and
    /// ignoring case. Returns null if the library has no such font, or if the size is NaN or above `kPointSizeMax`. A
    /// size that is not above 0 becomes 12 points.
    static Ref<NSFont> fontWithName(const NSString& name, float size, const Library& library = {});
    /// The fonts for text without a named font; both have the same face, which has no glyphs if the library has no
    /// fonts. A size that is NaN or not above 0 becomes `systemFontSize`; a size above `kPointSizeMax` is clamped.
    ///@{
    static Ref<NSFont> titleBarFontOfSize(float size, const Library& library = {});
    static Ref<NSFont> systemFontOfSize(float size, const Library& library = {});
    ///@}
    /// In points.
    static float systemFontSize() { return 13.0f; }
    /// The same face at another size, with the size rules of `fontWithName`.
    Ref<NSFont> fontWithSize(float size) const;
    /// The nearest face of the same family and library, at the same size, with these traits. If the family has no such
    /// face, bold and italic are synthesised, but not removed. A colour font has no traits. Substitute fonts for
    /// missing characters get the traits too.
    Ref<NSFont> fontWithTraits(FontTraits traits) const;

    /// The traits passed to `fontWithTraits`.
    const FontTraits& traits() const { return traits_; }
    /// The requested traits that are synthesised or could not be removed.
    FontTraits unmetTraits() const;

    /// In points.
    static constexpr float kPointSizeMax = Limits::kFontPointsMax;

    /// The PostScript name, which `fontWithName` accepts.
    Ref<NSString> fontName() const;
    /// In English if the font has such a name; empty, like the PostScript name, for the face without glyphs.
    Ref<NSString> familyName() const;
    /// Above 0 and at most `kPointSizeMax`.
    float pointSize() const { return pointSize_; }

    /// In points at this size: the typographic metrics if the font's OS/2 table requests them, else those of its hhea
    /// table, else the Windows metrics of OS/2; 0.8 and -0.2 of the size if it has no metrics. The descender is below
    /// the baseline, so never positive; the leading is the line gap, never negative.
    ///@{
    float ascender() const;
    float descender() const;
    float leading() const;
    ///@}

    /// The font's position for rules under and through text, or the usual position if it has none.
    ///@{
    FontRule underline() const;
    FontRule strikeThrough() const;
    ///@}

    /// The glyph of a character (a Unicode code point); 0 if the font does not have it.
    NSGlyph glyphForCharacter(char32_t character) const;
    /// Whether the font has a glyph for every character that needs one, which joiners, variation selectors and controls
    /// do not. An emoji followed by U+FE0E requires a font without colour glyphs, any other emoji a font with them.
    bool coversText(std::u16string_view text) const;
    /// The advance in points, unhinted and without kerning; the height is 0. Zero if the font has no such glyph.
    NSSize advancementForGlyph(NSGlyph glyph) const;
    /// A box around the glyph's outline, in points from its origin, y upward. It contains the outline's control points,
    /// so it may be larger than the ink. The zero rectangle for a glyph without an outline.
    NSRect boundingRectForGlyph(NSGlyph glyph) const;
    /// Whether the glyph's outline cannot be read from the font file, so that nothing is drawn for it.
    bool isGlyphDamaged(NSGlyph glyph) const;

    /// The library where it was looked up and which supplies substitutes for its missing characters; never null.
    const Library& fontLibrary() const { return library_; }
    /// For the text system; lives as long as the font.
    const FontFace& face() const { return *face_; }

    /// Whether text looks the same in both: the same face at the same size.
    bool looksLike(const NSFont& other) const;
    /// Whether the other has the same face, library, size and requested traits.
    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSFont"; }

    /// For the text system: neither pointer may be null, the face must be the library's, and the size above 0 and at
    /// most `kPointSizeMax`.
    NSFont(Library library, std::shared_ptr<const FontFace> face, float pointSize, FontTraits traits = {});

private:
    float points(double fontUnits) const;

    const Library library_;
    const std::shared_ptr<const FontFace> face_;
    const float pointSize_;
    const FontTraits traits_;
};

}  // namespace qz
