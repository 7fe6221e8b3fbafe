#include "platform/text/ParagraphRange.h"

namespace qz {

bool endsParagraph(std::u16string_view text, size_t index) {
    switch (text[index]) {
        case u'\r':
            return index + 1 == text.size() || text[index + 1] != u'\n';
        case u'\n':
        case 0x0085:
        case 0x2029:
            return true;
        default:
            return false;
    }
}

Range paragraphRange(std::u16string_view text, Range range) {
    size_t start = range.location;
    while (start > 0 && !endsParagraph(text, start - 1)) --start;
    size_t end = range.length > 0 ? range.end() - 1 : range.location;
    while (end < text.size() && !endsParagraph(text, end)) ++end;
    if (end < text.size()) ++end;
    return {static_cast<uint32_t>(start), static_cast<uint32_t>(end - start)};
}

}  // namespace qz
