#pragma once

#include <optional>
#include <string_view>

#include "captions/CaptionProblem.h"
#include "platform/foundation/NSData.h"

namespace qz {

/// The text of a file in UTF-8, without its byte-order mark; valid as long as the data lives. None for other encodings,
/// with what the file seems to be in, or the offset of the first byte that is wrong, in `error`.
std::optional<std::string_view> utf8TextOfFile(const NSData& file, CaptionProblem* error);

/// The text with each line end, CR LF or CR alone, as one line feed.
std::string withLineFeeds(std::string_view text);

}  // namespace qz
