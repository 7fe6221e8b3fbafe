#pragma once

#include <string>
#include <string_view>

namespace qz {

/// The text with control characters, including line ends, replaced by blanks, safe to use in a one-line diagnostic.
std::string oneLine(std::string_view text);

/// The first 40 bytes of the text at most, in quotes and on one line, cut between characters; "…" marks the cut.
std::string quotedExcerpt(std::string_view text);

}  // namespace qz
