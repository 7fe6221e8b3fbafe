#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionProblem.h"

namespace qz {

/// The text of a file in UTF-8, without its byte-order mark; valid as long as the data lives. Returns no value for
/// other encodings, with the likely encoding, or the offset of the first malformed byte, in `error`.
std::optional<std::string_view> utf8TextOfFile(const NSData& file, CaptionProblem* error);

/// The same for a format that is always UTF-8: malformed sequences are read as U+FFFD and reported as a problem.
std::optional<std::string> repairedTextOfFile(const NSData& file, CaptionProblems& problems, CaptionProblem* error);

/// The same for formats that may also be in UTF-16: with a byte-order mark, such a text is turned into UTF-8. A file
/// with more multi-byte characters than malformed sequences is damaged UTF-8, and read with U+FFFD for them; a file
/// with fewer is in another encoding.
std::optional<std::string> unicodeTextOfFile(const NSData& file, CaptionProblems& problems, CaptionProblem* error);

/// Without the byte-order mark of UTF-8.
std::string_view withoutMark(std::string_view text);

/// The text with each CR LF or CR replaced by a line feed.
std::string withLineFeeds(std::string_view text);

}  // namespace qz
