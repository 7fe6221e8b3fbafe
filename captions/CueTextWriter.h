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
    /// Contents of tags in the former payload that annotated strings cannot hold and that are lost: "lang he",
    /// "00:01.500".
    std::vector<std::string> lostTags;
    /// Names of annotations that are left out, since no tag can name them: "tab\tbed", "two blanks.".
    std::vector<std::string> unnamed;
    /// Names of annotations that will be read as another annotation of the palette with the same name.
    std::vector<std::string> mistaken;
    /// Names of annotations that are lost under another colour or language, since captions allow only one of those.
    std::vector<std::string> covered;
};

/// Writes a text as WebVTT cue text that reads back as the same text with the same annotations.
///
/// `former` is the payload that the text was read from, with separate keys for names missing from the palette (see
/// CueNames), or empty. It is kept verbatim if it still means the same; otherwise its voices stay voices. Any other
/// annotation is written as `<b>`, `<i>` or `<u>` when that is its name, else as a class, and one that no class can
/// name (a name with a dot, with ">", or with blanks and "_") as a voice. An annotation missing from the palette is
/// written by its name, whose blanks may be read back as "_". The global annotation, which applies anyway, is left out.
///
/// Returns no value, with the reason in `reason`, if cue text cannot hold the characters or would be too long.
std::optional<WrittenCueText> writeCueText(const QzAnnoString& text, const QzAnnoPalette& palette,
                                           std::string_view former, std::string& reason);

}  // namespace qz
