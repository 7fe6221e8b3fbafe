#pragma once

#include <string_view>
#include <vector>

#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// The font of text that names no font.
Ref<NSFont> defaultFont(const NSFont::Library& library = {});

/// The font that serves a stretch of text, which begins where the one before ends.
struct FontStretch {
    uint32_t end;
    Ref<NSFont> font;
};

/// The fonts for a text that asks for `font`: that font wherever it has the characters, and elsewhere as few others of
/// its library as possible. Blanks, digits and punctuation between two stretches of one such font are set in it as
/// well. Fonts change only between grapheme clusters, and neighbouring stretches have different fonts. `language` is a
/// BCP 47 tag or empty.
std::vector<FontStretch> fontsForText(const Ref<NSFont>& font, std::u16string_view text,
                                      std::string_view language = {});

}  // namespace qz
