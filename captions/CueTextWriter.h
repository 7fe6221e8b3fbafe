#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"

namespace qz {

struct WrittenCueText {
    std::string payload;
    /// Insides of the former payload's tags that say what the text does not: "lang he", "c.Nobody", "v Bob".
    std::vector<std::string> lost;
};

/// Writes a text as WebVTT cue text that is read back as the same text with the same annotations of the palette.
///
/// `former` is the payload that the text was read from, or empty. As long as it still says the same it is kept to the
/// letter; otherwise its voices stay voices. Any other annotation is written as `<b>`, `<i>` or `<u>` when that is its
/// name, else as a class, and one that no class can name (a name with a dot, with ">", or with blanks and "_") as a
/// voice. An annotation that its palette has lost keeps its name. The global annotation, which holds anyway, is left
/// out.
///
/// None, with the reason in `reason`, when there is no such cue text.
std::optional<WrittenCueText> writeCueText(const QzAnnoString& text, const QzAnnoPalette& palette,
                                           std::string_view former, std::string& reason);

}  // namespace qz
