#pragma once

#include <string_view>
#include <vector>

#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// The font of text that names none.
Ref<NSFont> defaultFont();

/// The font that serves a stretch of text, which begins where the one before ends.
struct FontStretch {
    uint32_t end;
    Ref<NSFont> font;
};

/// The fonts for a text that asks for `font`: that font wherever it has the characters, elsewhere ones that do, as few
/// as possible. Blanks, digits and punctuation between two stretches of one such font are shown by that font as well.
/// Changes only between grapheme clusters; stretches of the same font in a row are one. `language` is a BCP 47 tag or
/// empty.
std::vector<FontStretch> fontsForText(const Ref<NSFont>& font, std::u16string_view text,
                                      std::string_view language = {});

}  // namespace qz
