#pragma once

#include <functional>
#include <optional>
#include <string_view>

namespace qz {

/// Returns the character at `index` and advances it; U+FFFD for half a surrogate pair, 0 beyond the end.
char32_t nextCharacter(std::u16string_view text, size_t& index);

/// Whether it is a control, a tab, or a line or paragraph separator, which affects layout but shows nothing.
bool isLayoutControl(char32_t character);

/// Whether the cluster is shown in colour, by default or because of U+FE0F.
bool hasEmojiForm(std::u16string_view cluster);

/// Whether every character of the cluster is common to all scripts: blanks, digits, punctuation, but not emoji. Line
/// ends and tabs do not count, since they separate the text around them.
bool belongsToAnyScript(std::u16string_view cluster);

/// Whether shaping finds a glyph for every character that needs one, given `hasGlyph` for single characters. If
/// `hasColourGlyphs` has a value, emoji require a colour font, and emoji followed by U+FE0E a font without colour;
/// otherwise an emoji counts in either form.
bool isTextCovered(std::u16string_view text, const std::function<bool(char32_t)>& hasGlyph,
                   std::optional<bool> hasColourGlyphs);

}  // namespace qz
