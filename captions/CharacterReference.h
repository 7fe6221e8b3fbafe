#pragma once

#include <string>
#include <string_view>

namespace qz {

struct CharacterReference {
    /// Its length in bytes; 0 if there is no reference.
    size_t length = 0;
    std::string utf8;
};

/// The character reference at the start of a text, which is a "&": names and numbers as in HTML (WHATWG HTML, "named
/// character reference state", "numeric character reference end state"). The semicolon may be missing where HTML allows
/// it.
CharacterReference characterReferenceAt(std::string_view text);

}  // namespace qz
