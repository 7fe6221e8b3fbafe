#include "platform/foundation/DiagnosticText.h"

#include <algorithm>

namespace qz {

std::string oneLine(std::string_view text) {
    std::string line(text);
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
    return line;
}

std::string quotedExcerpt(std::string_view text) {
    constexpr size_t bytesMax = 40;
    if (text.size() <= bytesMax) return "\"" + oneLine(text) + "\"";
    size_t end = bytesMax;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return "\"" + oneLine(text.substr(0, end)) + "…\"";
}

}  // namespace qz
