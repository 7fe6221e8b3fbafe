#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

namespace qz {

/// The ending of a file's name with its point, in lower case: ".png" for "titles/A.PNG". Empty if there is none.
inline std::string endingOf(std::string_view path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::ranges::transform(ending, ending.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return ending;
}

}  // namespace qz
