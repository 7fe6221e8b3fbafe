#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"
#include "captions/CaptionProblem.h"

namespace qz {

/// A stretch of a cue over which a tag stands open.
struct CueSpan {
    enum Kind { styleClass, reset, bold, italic, underline, strikeThrough, voice, colour, language };
    Kind kind;
    /// The class, the style that stands in the place of another (`reset`), the speaker, which may be empty, the colour
    /// as it is written, or the language's tag. Of the others: "0" where the file takes the trait from a style that has
    /// it, else empty.
    std::string name;
    /// May be empty.
    Range range;
    /// The line of the tag.
    uint32_t line;

    friend bool operator==(const CueSpan&, const CueSpan&) = default;
};

/// A cue's payload taken apart: what is to be read, and the spans in the order in which they open.
///
/// Spans of different kinds or names overlap as they like; of one kind and name they never do, since a tag inside
/// another of the same meaning changes nothing.
struct CueText {
    std::u16string text;
    std::vector<CueSpan> spans;
    /// The insides of tags that say what titles do not keep, each once: "ruby", "00:01.000".
    std::set<std::string, std::less<>> dropped;
};

/// Reads WebVTT cue text (W3C WebVTT, "cue text parsing rules"): a text of lines that are separated by line feeds, the
/// first one being line `firstLine` of its file. Takes any text: tags that the format does not know, or that close
/// nothing, are dropped, and a tag that nothing closes holds to the end. Ruby text follows its base; time stamps are
/// dropped. `problems`, when given, receives what is dropped, each kind once for the file.
CueText parseCueText(std::string_view payload, uint32_t firstLine, CaptionProblems* problems = nullptr);

}  // namespace qz
