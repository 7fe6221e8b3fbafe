#pragma once

#include <string_view>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// Words by Unicode's rules: text that is neither white space nor punctuation. Positions count UTF-16 units.

/// The stretch between two word boundaries that contains the index: a word, or the text between two. Empty for an empty
/// text.
Range wordAt(std::u16string_view text, uint32_t index);
/// The end of the word at or after the index; the end of the text if there are no more words.
uint32_t nextWordEnd(std::u16string_view text, uint32_t index);
/// The start of the word before the index, or 0.
uint32_t previousWordStart(std::u16string_view text, uint32_t index);

}  // namespace qz
