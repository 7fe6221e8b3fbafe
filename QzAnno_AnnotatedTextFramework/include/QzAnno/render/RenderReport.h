#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// What of a title is not shown as it was asked for. Texts are UTF-8; ranges count UTF-16 units of the title's text and
/// come in its order.
struct RenderReport {
    /// Text that another font shows than the one asked for, since that is not there or lacks the characters.
    struct Substitution {
        /// As the palette names it; the name of the system's font where nothing is named.
        std::string fontAskedFor;
        /// Its PostScript name.
        std::string fontThatServed;
        /// Whether the font asked for is not there; else it lacks the characters.
        bool isFontMissing = false;
        /// None touches the next.
        std::vector<Range> ranges;
        /// The characters of the ranges, each once, in the order in which they come first.
        std::string characters;
    };
    /// A character that is shown as the font's sign for a lack, mostly an empty box, or not at all.
    struct MissingGlyph {
        std::string character;      ///< the first of several that the font cannot show together
        std::string font;           ///< the PostScript name of the one that lacks it
        std::vector<Range> ranges;  ///< none touches the next
    };
    /// Text whose font has a trait asked for, or is without it, only in part.
    struct MissingTrait {
        /// What is asked for and not there.
        enum class Trait {
            bold,     ///< no face of the family is: an emboldened one is shown
            italic,   ///< no face of the family is: a slanted one is shown
            regular,  ///< every face of the family is bold, which cannot be taken away
            upright,  ///< every face of the family is italic, likewise
        };
        Trait trait;                ///< of the ranges
        std::string font;           ///< the PostScript name of the one that is shown
        std::vector<Range> ranges;  ///< none touches the next
    };
    /// Text that is not seen, or not all of it.
    struct Clipping {
        /// What of the characters is not seen.
        enum class Part {
            text,    ///< the text box has no room for it
            glyphs,  ///< its letters reach beyond the picture
            layer,   ///< a layer of theirs does, and the letters do not
        };
        Part part;           ///< of `characters`
        Range characters;    ///< touches no other of the same part and layer
        uint32_t layer = 0;  ///< which one, from 1, the uppermost; 0 for other parts
    };

    std::vector<Substitution> substitutions;  ///< one for each pair of fonts
    std::vector<MissingGlyph> missingGlyphs;  ///< one for each character and font
    std::vector<MissingTrait> missingTraits;  ///< one for each trait and font
    std::vector<Clipping> clipped;            ///< part by part

    /// Whether all is shown as it was asked for.
    bool isEmpty() const {
        return substitutions.empty() && missingGlyphs.empty() && missingTraits.empty() && clipped.empty();
    }
};

}  // namespace qz
