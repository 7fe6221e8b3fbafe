#pragma once

#include <string_view>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// Words by Unicode's rules: what is neither white space nor punctuation. Positions count UTF-16 units.

/// The stretch between two word boundaries that holds the index: a word, or what lies between two. Empty for an empty
/// text.
Range wordAt(std::u16string_view text, uint32_t index);
/// The end of the word at or behind the index; the end of the text when no further one comes.
uint32_t nextWordEnd(std::u16string_view text, uint32_t index);
/// The start of the word before the index; 0 when there is none.
uint32_t previousWordStart(std::u16string_view text, uint32_t index);

}  // namespace qz
