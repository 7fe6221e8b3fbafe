#pragma once

#include <memory>
#include <string_view>

#include <hb.h>

#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/text/FontSynthesis.h"

namespace qz {

class ColourGlyphs;

struct HarfBuzzRelease {
    void operator()(hb_blob_t* blob) const { hb_blob_destroy(blob); }
    void operator()(hb_face_t* face) const { hb_face_destroy(face); }
    void operator()(hb_font_t* font) const { hb_font_destroy(font); }
    void operator()(hb_buffer_t* buffer) const { hb_buffer_destroy(buffer); }
};
template <class T>
using HarfBuzzRef = std::unique_ptr<T, HarfBuzzRelease>;

/// An opened font without a size. Lengths are in font units, `unitsPerEm` per em; y grows upward.
///
/// May be used from several threads: shaping and character lookup need no lock, outlines lock once per face.
class FontFace {
public:
    struct Metrics {
        double ascender, descender, lineGap;
    };
    /// A rule under or through text: the height of its upper edge above the baseline, and its thickness.
    struct Rule {
        double top, thickness;
    };

    /// Returns null if the file cannot be read or does not have the font, or if none of its letters has an outline,
    /// which indicates a damaged file.
    static std::shared_ptr<const FontFace> open(const InstalledFont& font, FontSynthesis synthesis = {});
    /// A face whose only glyph, 0, is empty; for systems without fonts.
    static std::shared_ptr<const FontFace> withoutGlyphs();
    ~FontFace();

    /// Its entry in the font library; names and path are empty for the face without glyphs.
    const InstalledFont& installedFont() const { return installedFont_; }
    /// The synthesis applied to its outlines.
    FontSynthesis synthesis() const { return synthesis_; }
    double unitsPerEm() const { return unitsPerEm_; }
    /// The descender is never positive, the line gap never negative.
    const Metrics& metrics() const { return metrics_; }
    /// The font's own rules, or else the usual ones.
    ///@{
    Rule underline() const;
    Rule strikeThrough() const;
    ///@}
    /// Whether it has colour glyphs: layers, pictures or SVG documents.
    bool hasColourGlyphs() const { return hasColourGlyphs_; }

    /// Null if there are none.
    const ColourGlyphs* colourGlyphs() const { return colourGlyphs_.get(); }

    /// Returns 0 if the font does not have the character.
    NSGlyph glyphForCharacter(char32_t character) const;
    /// Whether there is a glyph for the character that is not known to be damaged.
    bool canShow(char32_t character) const;
    /// Reads the glyphs of the text's characters, so that `canShow` detects damaged ones.
    void checkGlyphs(std::u16string_view text) const;
    /// As `NSFont::coversText`.
    bool coversText(std::u16string_view text) const;
    double advanceOfGlyph(NSGlyph glyph) const;
    /// Unhinted, with quadratic curves raised to cubics; for a colour glyph, the border of its visible area. Empty for
    /// a glyph without an outline.
    std::shared_ptr<const NSBezierPath> outlineOfGlyph(NSGlyph glyph) const;
    /// Whether the outline cannot be read. The first damaged glyph of a face is logged, and `canShow` checks from then
    /// on.
    bool isGlyphDamaged(NSGlyph glyph) const;

    /// For shaping; one unit of its scale is a font unit. Immutable.
    hb_font_t* shaper() const { return shaper_.get(); }

private:
    class OutlineSource;

    [[gnu::visibility("hidden")]] FontFace(const InstalledFont& font, FontSynthesis synthesis,
                                           HarfBuzzRef<hb_blob_t> file);

    Metrics readMetrics() const;
    Rule rule(unsigned int topTag, unsigned int thicknessTag, Rule otherwise) const;
    bool showsLetters() const;

    const InstalledFont installedFont_;
    const FontSynthesis synthesis_;
    HarfBuzzRef<hb_blob_t> file_;
    std::unique_ptr<OutlineSource> outlines_;  // null if the file cannot be used
    std::unique_ptr<const ColourGlyphs> colourGlyphs_;
    HarfBuzzRef<hb_font_t> shaper_;
    double unitsPerEm_ = 1000;
    uint32_t glyphCount_ = 0;
    Metrics metrics_ = {};
    bool hasColourGlyphs_ = false;
};

}  // namespace qz
