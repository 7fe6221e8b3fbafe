#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

class FontFace;
class FontLibrary;

/// The number of a glyph within its font.
using NSGlyph = uint32_t;
/// Stands for a character that takes part in layout but shows nothing: a line break, a soft hyphen inside a line.
inline constexpr NSGlyph NSControlGlyph = 0x00FFFFFF;

/// What a run asks of its font beyond the font's name: with the trait or without. What is not set stays as the font is.
struct FontTraits {
    std::optional<bool> bold;    ///< from semibold on
    std::optional<bool> italic;  ///< oblique counts as that

    /// Whether nothing is asked.
    bool isEmpty() const { return !bold && !italic; }
    friend bool operator==(const FontTraits&, const FontTraits&) = default;
};

/// A rule under text or through it, in points: its upper edge above the baseline, below it less than 0, and its
/// thickness.
struct FontRule {
    float top = 0;        ///< of the upper edge
    float thickness = 0;  ///< never below 0
};

/// A font at a size in points; immutable. May be used from several threads.
class NSFont final : public NSObject {
public:
    /// Where a font is looked up, which the font keeps; null stands for `FontLibrary::shared`, the fonts of this
    /// machine.
    using Library = std::shared_ptr<FontLibrary>;

    /// The font whose PostScript name, full name, "family-style" or family (its regular face) is the given one, in this
    /// order and ignoring case; null if the library has no such font. A size that is not above 0 becomes 12 points; a
    /// size above `kPointSizeMax`, or not a number, gives null.
    static Ref<NSFont> fontWithName(const NSString& name, float size, const Library& library = {});
    /// The fonts that stand in where none is named; both have the same face, which has no glyphs if the library has no
    /// fonts at all. A size that is not above 0, or not a number, becomes `systemFontSize`; one above `kPointSizeMax`
    /// becomes that.
    ///@{
    static Ref<NSFont> titleBarFontOfSize(float size, const Library& library = {});
    static Ref<NSFont> systemFontOfSize(float size, const Library& library = {});
    ///@}
    /// In points.
    static float systemFontSize() { return 13.0f; }
    /// The same face at another size, with the size rules of `fontWithName`.
    Ref<NSFont> fontWithSize(float size) const;
    /// The face of the same family and library, at the same size, that has these traits and otherwise comes nearest.
    /// Where the family has no such face, bold and italic are synthesised; the other way round the font stays as it is.
    /// A font in colours has no traits. Fonts that serve for characters that it lacks get the traits as well.
    Ref<NSFont> fontWithTraits(FontTraits traits) const;

    /// What was asked of `fontWithTraits`.
    const FontTraits& traits() const { return traits_; }
    /// Those of them that are synthesised, or could not be taken away.
    FontTraits unmetTraits() const;

    /// In points.
    static constexpr float kPointSizeMax = Limits::kFontPointsMax;

    /// The PostScript name; `fontWithName` finds the font by it.
    Ref<NSString> fontName() const;
    /// In English when the font has such a name; empty for the face without glyphs, as the PostScript name is then.
    Ref<NSString> familyName() const;
    /// Above 0, and `kPointSizeMax` at most.
    float pointSize() const { return pointSize_; }

    /// In points at this size: the typographic metrics when the font's OS/2 table asks for them, else those of its hhea
    /// table, else the Windows metrics of OS/2; 0.8 and -0.2 of the size when it has none. The descender lies below the
    /// baseline, so it is never above 0; the leading is the line gap, and never below 0.
    ///@{
    float ascender() const;
    float descender() const;
    float leading() const;
    ///@}

    /// Where the font has rules under text and through it; the usual place where it does not say.
    ///@{
    FontRule underline() const;
    FontRule strikeThrough() const;
    ///@}

    /// The glyph of a character (a Unicode code point); 0 when the font lacks it.
    NSGlyph glyphForCharacter(char32_t character) const;
    /// Whether the font has a glyph for every character of the text that needs one: joiners, variation selectors and
    /// controls do not. An emoji, unless U+FE0E asks for the plain form, counts only in a font with colour glyphs; one
    /// that is followed by U+FE0E, only in a font without.
    bool coversText(std::u16string_view text) const;
    /// The advance in points, unhinted and without kerning; the height is 0. The zero size for a number that is no
    /// glyph of the font.
    NSSize advancementForGlyph(NSGlyph glyph) const;
    /// A box round the glyph's outline, in points from its origin, y upward. Made of the outline's control points, so
    /// it may be larger than the ink; the zero rectangle for a glyph without an outline.
    NSRect boundingRectForGlyph(NSGlyph glyph) const;
    /// Whether the glyph's outline cannot be read from the font's file; nothing is drawn for it then.
    bool isGlyphDamaged(NSGlyph glyph) const;

    /// Where it was looked up, and where fonts for the characters that it lacks are found; never null.
    const Library& fontLibrary() const { return library_; }
    /// For the text system; lives as long as the font.
    const FontFace& face() const { return *face_; }

    /// Whether text is shaped and drawn alike in both: the same face at the same size.
    bool looksLike(const NSFont& other) const;
    /// Whether the other is the same face of the same library at the same size, with the same traits asked for.
    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSFont"; }

    /// For the text system: neither pointer is null, the face is one of the library's, and the size is above 0 and at
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
