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

/// The stretch of a cue covered by a tag.
struct CueSpan {
    enum Kind { styleClass, reset, bold, italic, underline, strikeThrough, voice, colour, language };
    Kind kind;
    /// The class, the replacing style (`reset`), the speaker, which may be empty, the colour as written, or the
    /// language tag. For other kinds: "0" if the file removes the trait from a style, else empty.
    std::string name;
    /// May be empty.
    Range range;
    /// The line of the tag.
    uint32_t line;

    friend bool operator==(const CueSpan&, const CueSpan&) = default;
};

/// A parsed cue: its plain text, and the spans in the order in which they open.
///
/// Spans of different kinds or names may overlap freely; spans of the same kind and name never do, since a tag inside
/// another of the same meaning changes nothing.
struct CueText {
    std::u16string text;
    std::vector<CueSpan> spans;
    /// The contents of tags that titles do not keep, each once: "ruby", "00:01.000".
    std::set<std::string, std::less<>> dropped;
};

/// Reads WebVTT cue text (W3C WebVTT, "cue text parsing rules"): a text with line feeds between lines, the first being
/// line `firstLine` of its file. Accepts any text: unknown tags, and end tags that close nothing, are dropped, and an
/// unclosed tag extends to the end. Ruby text follows its base; time stamps are dropped. `problems`, if given, receives
/// what is dropped, each kind once for the file.
CueText parseCueText(std::string_view payload, uint32_t firstLine, CaptionProblems* problems = nullptr);

}  // namespace qz
