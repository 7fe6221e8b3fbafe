#pragma once

#include <cstddef>
#include <string_view>

namespace qz {

/// HTML's name for one or two characters (WHATWG HTML, "named character references").
struct NamedCharacter {
    /// With its semicolon: "amp;".
    std::string_view name;
    std::string_view utf8;
};

/// The length of the longest name, including its semicolon.
inline constexpr size_t kCharacterNameMax = 32;

/// The characters of a name, in UTF-8; empty for an unknown name. Names from before XML also exist without their
/// semicolon: "amp".
std::string_view characterNamed(std::string_view name);

}  // namespace qz
