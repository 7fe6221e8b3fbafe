#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionProblem.h"

namespace qz {

/// The text of a file in UTF-8, without its byte-order mark; valid as long as the data lives. None for other encodings,
/// with what the file seems to be in, or the offset of the first byte that is wrong, in `error`.
std::optional<std::string_view> utf8TextOfFile(const NSData& file, CaptionProblem* error);

/// The same of a format that is UTF-8 by its definition: what is no character is read as U+FFFD, which is a problem.
std::optional<std::string> repairedTextOfFile(const NSData& file, CaptionProblems& problems, CaptionProblem* error);

/// The same for formats that may also be in UTF-16: with a byte-order mark, such a text is turned into UTF-8. A file
/// that has more characters of several bytes than faults is damaged UTF-8, and read with U+FFFD in their place; one
/// with more faults is in another encoding.
std::optional<std::string> unicodeTextOfFile(const NSData& file, CaptionProblems& problems, CaptionProblem* error);

/// Without the byte-order mark of UTF-8.
std::string_view withoutMark(std::string_view text);

/// The text with each line end, CR LF or CR alone, as one line feed.
std::string withLineFeeds(std::string_view text);

}  // namespace qz
