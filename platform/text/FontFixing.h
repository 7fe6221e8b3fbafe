#pragma once

#include <string_view>
#include <vector>

#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// The font of text without one.
Ref<NSFont> defaultFont(const NSFont::Library& library = {});

/// The font of a stretch of text, which begins at the end of the previous stretch.
struct FontStretch {
    uint32_t end;
    Ref<NSFont> font;
};

/// The fonts for a text that requests `font`: that font wherever it has the characters, and elsewhere as few
/// substitutes from its library as possible. Blanks, digits and punctuation between two stretches of one substitute use
/// it too. Fonts change only between grapheme clusters, and adjacent stretches have different fonts. `language` is a
/// BCP 47 tag or empty.
std::vector<FontStretch> fontsForText(const Ref<NSFont>& font, std::u16string_view text,
                                      std::string_view language = {});

}  // namespace qz
