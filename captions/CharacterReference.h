#pragma once

#include <string>
#include <string_view>

namespace qz {

struct CharacterReference {
    /// The bytes it takes; 0 when the text holds none.
    size_t length = 0;
    std::string utf8;
};

/// The character reference at the start of a text, which is a "&": names and numbers as in HTML (WHATWG HTML, "named
/// character reference state", "numeric character reference end state"). The semicolon may be missing where HTML lets
/// it.
CharacterReference characterReferenceAt(std::string_view text);

}  // namespace qz
