#pragma once

#include <string_view>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Whether a paragraph ends after the unit at `index`: after LF, CR (together with a following LF), NEL and U+2029.
bool endsParagraph(std::u16string_view text, size_t index);
/// Whether the unit ends a line but not the paragraph: line separator, vertical tab, form feed.
inline bool endsLine(char16_t unit) {
    return unit == 0x2028 || unit == 0x000B || unit == 0x000C;
}
/// The paragraphs, including separators, that contain the range; for an empty range, the one that contains its
/// location.
Range paragraphRange(std::u16string_view text, Range range);

}  // namespace qz
