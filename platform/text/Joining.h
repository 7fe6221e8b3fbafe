#pragma once

#include <cstddef>
#include <string_view>

namespace qz {

/// Whether the letters on either side of the position are joined, as in Arabic, ignoring marks between them. The
/// position counts UTF-16 units; nothing is joined at the ends of the text.
bool isJoined(std::u16string_view text, size_t position);

}  // namespace qz
