#pragma once

#include <string>
#include <vector>

#include "platform/foundation/Range.h"

namespace qz {

/// What of a title is not shown as it was asked for. Texts are UTF-8; ranges count UTF-16 units of the title's text and
/// come in its order.
struct RenderReport {
    /// Text that another font shows than the one asked for, since that is not there or lacks the characters.
    struct Substitution {
        /// As the palette names it; the name of the system's font where nothing is named.
        std::string fontAskedFor;
        std::string fontThatServed;
        bool isFontMissing = false;
        std::vector<Range> ranges;
        /// The characters of the ranges, each once, in the order in which they come first.
        std::string characters;
    };
    /// A character that is shown as the font's sign for a lack, mostly an empty box, or not at all.
    struct MissingGlyph {
        std::string character;
        std::string font;
        std::vector<Range> ranges;
    };
    /// Text that is not seen, or not all of it.
    struct Clipping {
        enum class Part {
            text,    ///< the text box has no room for it
            glyphs,  ///< its letters reach beyond the picture
            layer1,  ///< their layers do, and the letters do not
            layer2,
        };
        Part part;
        Range characters;
    };

    std::vector<Substitution> substitutions;
    std::vector<MissingGlyph> missingGlyphs;
    std::vector<Clipping> clipped;

    bool isEmpty() const { return substitutions.empty() && missingGlyphs.empty() && clipped.empty(); }
};

}  // namespace qz
