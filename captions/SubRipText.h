#pragma once

#include <cstdint>
#include <string_view>

#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"
#include "captions/CueText.h"

namespace qz {

struct SubRipText {
    CueText text;
    CuePlacement placement;
};

/// Reads the text of SubRip cues, as players do, since nobody ever wrote the format down: `<b>`, `<i>`, `<u>`, `<s>`,
/// `<font color=…>`, in any letter case, the same in braces but for `font`, overrides of SubStation Alpha for the same,
/// and `{\an1}` to `{\an9}` (or the older `{\a1}` to `{\a11}`), of which the first counts.
///
/// Tags may cross, and hold to the end of the cue where nothing closes them. `<br>` is a line end. A character
/// reference counts with its semicolon. The other parts of `font` and the other `{\…}` show nothing; what merely looks
/// like a tag is text. All this is reported, what players know and nothing here shows, once for the file.
class SubRipTextReader {
public:
    /// `problems` outlives this object.
    explicit SubRipTextReader(CaptionProblems& problems) : problems_(problems) {}

    /// A text of lines that are separated by line feeds, the first one being line `firstLine` of its file.
    SubRipText read(std::string_view payload, uint32_t firstLine);

private:
    class Builder;

    CaptionProblems& problems_;
};

}  // namespace qz
