#pragma once

#include <functional>
#include <optional>
#include <string_view>

namespace qz {

/// The character at `index`, which moves on; U+FFFD for half a surrogate pair, 0 beyond the end.
char32_t nextCharacter(std::u16string_view text, size_t& index);

/// A control, a tab, a line or paragraph separator: takes part in layout and shows nothing.
bool isLayoutControl(char32_t character);

/// Whether the cluster is shown in colour, for what it is or because U+FE0F asks for it.
bool hasEmojiForm(std::u16string_view cluster);

/// Whether every character of the cluster is of use to all scripts: blanks, digits, punctuation, but no emoji. A line
/// end or a tab is not among them: what stands behind it is not a part of what stands before.
bool belongsToAnyScript(std::u16string_view cluster);

/// Whether shaping finds a glyph for every character of the text that needs one, where `hasGlyph` tells of single
/// characters. `hasColourGlyphs` tells of the font; emoji count only in a colour font then, and those followed by
/// U+FE0E only in another. Without it, an emoji counts in any form.
bool isTextCovered(std::u16string_view text, const std::function<bool(char32_t)>& hasGlyph,
                   std::optional<bool> hasColourGlyphs);

}  // namespace qz
