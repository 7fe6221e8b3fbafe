#pragma once

#include <functional>
#include <string_view>

namespace qz {

/// A SubStation Alpha override, "fs20" or "pos(320,240)", which SubRip files may have too.
struct AssOverride {
    /// Without surrounding blanks.
    std::string_view text;
    /// "fs", "pos"; "1c" includes the digit. In "rSign" the style's name follows the letter directly.
    std::string_view kind;
    /// "20", "(320,240)"
    std::string_view value;
};

/// Calls `each` with the overrides in the contents of braces, such as "\\i1\\fs20", in order. Other text is skipped;
/// overrides inside the brackets of another belong to it.
void forEachAssOverride(std::string_view inside, const std::function<void(const AssOverride&)>& each);

}  // namespace qz
