#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace qz {

// ASCII functions, independent of the locale, for the keywords, numbers and names of caption formats.

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
}

inline std::string lowered(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), [](char c) { return lowered(c); });
    return small;
}

/// The text without leading and trailing blanks.
constexpr std::string_view trimmed(std::string_view text, std::string_view blanks = " \t") {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace qz
