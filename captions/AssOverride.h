#pragma once

#include <functional>
#include <string_view>

namespace qz {

/// An override of SubStation Alpha, "fs20" or "pos(320,240)", which SubRip files have too.
struct AssOverride {
    /// Without the blanks around it.
    std::string_view text;
    /// "fs", "pos"; with its digit "1c". A style's name runs into the letter of "rSign".
    std::string_view kind;
    /// "20", "(320,240)"
    std::string_view value;
};

/// Calls `each` with the overrides of "\\i1\\fs20", what stands between two braces, in their order. What stands outside
/// overrides is skipped; those within the brackets of another belong to it.
void forEachAssOverride(std::string_view inside, const std::function<void(const AssOverride&)>& each);

}  // namespace qz
