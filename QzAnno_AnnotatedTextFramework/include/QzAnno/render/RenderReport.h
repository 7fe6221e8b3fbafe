#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// What is not shown as requested in a title. Texts are UTF-8; ranges count UTF-16 units of the title's text and are in
/// text order.
struct RenderReport {
    /// Text shown in another font than requested, because that font or its characters are missing.
    struct Substitution {
        /// As the palette names it; the system font's name if it names no font.
        std::string fontAskedFor;
        /// Its PostScript name.
        std::string fontThatServed;
        /// Whether the requested font is missing; otherwise its characters are.
        bool isFontMissing = false;
        /// No two are adjacent.
        std::vector<Range> ranges;
        /// The characters in the ranges, each once, in order of first occurrence.
        std::string characters;
    };
    /// A character shown as the font's glyph for missing characters, usually an empty box, or not at all.
    struct MissingGlyph {
        std::string character;      ///< the first of several that the font cannot show together
        std::string font;           ///< the PostScript name of the font without it
        std::vector<Range> ranges;  ///< no two are adjacent
    };
    /// Text whose font does not have the requested faces.
    struct MissingTrait {
        /// The trait that the font's family does not have.
        enum class Trait {
            bold,     ///< no bold face: an emboldened one is shown
            italic,   ///< no italic face: a slanted one is shown
            regular,  ///< only bold faces, which stay bold
            upright,  ///< only italic faces, which stay italic
        };
        Trait trait;                ///< of the ranges
        std::string font;           ///< the PostScript name of the font shown
        std::vector<Range> ranges;  ///< no two are adjacent
    };
    /// Text that is not, or not fully, visible.
    struct Clipping {
        /// The part of the characters that is not visible.
        enum class Part {
            text,    ///< does not fit the text box
            glyphs,  ///< reach beyond the picture
            layer,   ///< reaches beyond the picture, though the glyphs do not
        };
        Part part;           ///< of `characters`
        Range characters;    ///< not adjacent to another of the same part and layer
        uint32_t layer = 0;  ///< which one, from 1, the uppermost; 0 for other parts
    };

    std::vector<Substitution> substitutions;  ///< one for each pair of fonts
    std::vector<MissingGlyph> missingGlyphs;  ///< one for each character and font
    std::vector<MissingTrait> missingTraits;  ///< one for each trait and font
    std::vector<Clipping> clipped;            ///< part by part

    /// Whether everything is shown as requested.
    bool isEmpty() const {
        return substitutions.empty() && missingGlyphs.empty() && missingTraits.empty() && clipped.empty();
    }
};

}  // namespace qz
