#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "captions/CaptionProblem.h"
#include "platform/foundation/NSData.h"

namespace qz {

/// The text of a file in UTF-8, without its byte-order mark; valid as long as the data lives. None for other encodings,
/// with what the file seems to be in, or the offset of the first byte that is wrong, in `error`.
std::optional<std::string_view> utf8TextOfFile(const NSData& file, CaptionProblem* error);

/// The same for formats that may also be in UTF-16: with a byte-order mark, such a text is turned into UTF-8, each half
/// of a pair that stands alone into U+FFFD.
std::optional<std::string> unicodeTextOfFile(const NSData& file, CaptionProblem* error);

/// The text with each line end, CR LF or CR alone, as one line feed.
std::string withLineFeeds(std::string_view text);

}  // namespace qz
