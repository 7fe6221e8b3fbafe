#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"

namespace qz {

struct WrittenCueText {
    std::string payload;
    /// Insides of the former payload's tags that say what texts do not, and that are gone: "lang he", "00:01.500".
    std::vector<std::string> lostTags;
    /// Names of annotations of the text that are left out, as no tag can name them: "tab\tbed", "two  blanks.".
    std::vector<std::string> unnamed;
    /// Names of annotations of the text that will be read as another one of the palette with the same name.
    std::vector<std::string> mistaken;
    /// Names of annotations of the text that are gone where another colour or language lies: of those captions read
    /// one.
    std::vector<std::string> covered;
};

/// Writes a text as WebVTT cue text that is read back as the same text with the same annotations.
///
/// `former` is the payload that the text was read from, with keys of its own for what the palette lacks (see CueNames),
/// or empty. As long as it still says the same it is kept to the letter; otherwise its voices stay voices. Any other
/// annotation is written as `<b>`, `<i>` or `<u>` when that is its name, else as a class, and one that no class can
/// name (a name with a dot, with ">", or with blanks and "_") as a voice. An annotation that the palette lacks is
/// written by its name; blanks in it may come back as "_". The global annotation, which holds anyway, is left out.
///
/// Null, with the reason in `reason`, when no cue text holds the characters, or when it gets too long.
std::optional<WrittenCueText> writeCueText(const QzAnnoString& text, const QzAnnoPalette& palette,
                                           std::string_view former, std::string& reason);

}  // namespace qz
