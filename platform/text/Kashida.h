#pragma once

#include <string_view>

#include "platform/text/LineFiller.h"

namespace qz {

/// Lengthens the Arabic words of a justified line by kashidas (U+0640) between joined letters, with at most one stroke
/// per word and at most `room` points in total; the glyphs belong to the preceding cluster. Places in a word follow the
/// rules of the Naskh style. Words are unchanged if the font has no kashida, or one that is not on the baseline between
/// unchanged letters.
void stretchByKashidas(LineContent& content, const Paragraph& paragraph, std::u16string_view text, double room);

}  // namespace qz
