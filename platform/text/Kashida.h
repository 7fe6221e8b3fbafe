#pragma once

#include <string_view>

#include "platform/text/LineFiller.h"

namespace qz {

/// Lengthens the Arabic words of a justified line by kashidas (U+0640) between joined letters, at most one stroke a
/// word and up to `room` points in all; the glyphs belong to the cluster before them. The place in a word goes by the
/// rules of the Naskh style. Words stay as they are where the font has no kashida, or one that does not lie on the
/// baseline between unchanged letters.
void stretchByKashidas(LineContent& content, const Paragraph& paragraph, std::u16string_view text, double room);

}  // namespace qz
