#pragma once

#include <cstddef>
#include <string_view>

namespace qz {

/// Whether the letters on either side of the position are joined, as those of Arabic are, marks between them left out
/// of account. The position counts UTF-16 units; at the ends of the text nothing is joined.
bool isJoined(std::u16string_view text, size_t position);

}  // namespace qz
