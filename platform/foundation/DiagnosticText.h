#pragma once

#include <string>
#include <string_view>

namespace qz {

/// The text with control characters, line ends among them, as blanks: safe inside a diagnostic of one line.
std::string oneLine(std::string_view text);

/// At most the first 40 bytes of the text in quotes, cut between characters and on one line; "…" marks the cut.
std::string quotedExcerpt(std::string_view text);

}  // namespace qz
