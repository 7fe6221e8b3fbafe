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

/// Reads the text of SubRip cues as players do, since the format has no standard: `<b>`, `<i>`, `<u>`, `<s>`, `<font
/// color=…>`, in any letter case, the same in braces except `font`, the equivalent SubStation Alpha overrides, and
/// `{\an1}` to `{\an9}` (or the older `{\a1}` to `{\a11}`), of which the first counts.
///
/// Tags may overlap, and unclosed tags extend to the end of the cue. `<br>` is a line end. A character reference needs
/// its semicolon. Other attributes of `font` and other `{\…}` have no effect; text that merely looks like a tag is
/// text. All of this is reported; features that only players support, once for the file.
class SubRipTextReader {
public:
    /// `problems` must outlive this object.
    explicit SubRipTextReader(CaptionProblems& problems) : problems_(problems) {}

    /// Reads a text with line feeds between lines, the first being line `firstLine` of its file.
    SubRipText read(std::string_view payload, uint32_t firstLine);

private:
    class Builder;

    CaptionProblems& problems_;
};

}  // namespace qz
