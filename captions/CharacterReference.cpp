#include "captions/CharacterReference.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "QzAnno/platform/foundation/NSString.h"
#include "captions/NamedCharacters.h"

namespace qz {
namespace {

// Numbers of C1 controls are read as Windows characters; 0 if there is none.
constexpr char16_t kWindows[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                   0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

std::string utf8OfNumber(uint32_t code) {
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return "\uFFFD";
    if (code >= 0x80 && code < 0xA0 && kWindows[code - 0x80] != 0) code = kWindows[code - 0x80];
    if (code < 0x10000) return utf8FromUtf16(std::u16string(1, static_cast<char16_t>(code)));
    return utf8FromUtf16(
        std::u16string{static_cast<char16_t>(0xD7C0 + (code >> 10)), static_cast<char16_t>(0xDC00 | (code & 0x3FF))});
}

CharacterReference numberAt(std::string_view text) {
    size_t begin = 2;
    const bool isHexadecimal = text.substr(begin).starts_with('x') || text.substr(begin).starts_with('X');
    if (isHexadecimal) ++begin;
    uint32_t code = 0;
    const auto [end, status] =
        std::from_chars(text.data() + begin, text.data() + text.size(), code, isHexadecimal ? 16 : 10);
    if (status == std::errc::invalid_argument) return {};
    if (status == std::errc::result_out_of_range) code = UINT32_MAX;
    auto length = static_cast<size_t>(end - text.data());
    if (text.substr(length).starts_with(';')) ++length;
    return {length, utf8OfNumber(code)};
}

}  // namespace

CharacterReference characterReferenceAt(std::string_view text) {
    if (text.starts_with("&#")) return numberAt(text);
    // The longest name counts: "&notin;" is a name, though "&not" is one too.
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::string_view name = text.substr(1, kCharacterNameMax);
    const size_t end = std::min(name.find_first_not_of(kLetters), name.size());
    name = name.substr(0, end + (name.substr(end).starts_with(';') ? 1 : 0));
    for (; !name.empty(); name.remove_suffix(1)) {
        const std::string_view utf8 = characterNamed(name);
        if (!utf8.empty()) return {1 + name.size(), std::string(utf8)};
    }
    return {};
}

}  // namespace qz
