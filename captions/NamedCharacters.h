#pragma once

#include <cstddef>
#include <string_view>

namespace qz {

/// A name that HTML has for one character, or for two (WHATWG HTML, "named character references").
struct NamedCharacter {
    /// With its semicolon: "amp;".
    std::string_view name;
    std::string_view utf8;
};

/// No name is longer, its semicolon included.
inline constexpr size_t kCharacterNameMax = 32;

/// The characters of a name, in UTF-8; empty for a name that HTML does not have. Names from the time before XML exist
/// without their semicolon too: "amp".
std::string_view characterNamed(std::string_view name);

}  // namespace qz
