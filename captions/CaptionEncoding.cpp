#include "captions/CaptionEncoding.h"

#include <algorithm>

#include <unicode/utf8.h>

#include "platform/foundation/NSString.h"

namespace qz {
namespace {

// The offset of the first byte that is not part of a character; npos when all are.
size_t findMalformed(std::string_view text) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    for (size_t i = 0; i < text.size();) {
        const size_t begin = i;
        UChar32 character = 0;
        U8_NEXT(bytes, i, text.size(), character);
        if (character < 0) return begin;
    }
    return std::string_view::npos;
}

constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

bool seemsUtf16(std::string_view text) {
    if (text.starts_with(kLittleEndianMark) || text.starts_with(kBigEndianMark)) return true;
    // Without a mark: the first character is of ASCII, and half of it is zero.
    return text.size() > 1 && (text[0] == '\0') != (text[1] == '\0');
}

}  // namespace

std::optional<std::string_view> utf8TextOfFile(const NSData& file, CaptionProblem* error) {
    std::string_view text = file.view();
    const auto refuse = [error](uint32_t line, std::string message) {
        if (error) *error = {CaptionProblem::malformed, line, std::move(message)};
        return std::nullopt;
    };
    if (seemsUtf16(text)) return refuse(1, "the file is in UTF-16; save it as UTF-8");
    const size_t malformed = findMalformed(text);
    if (malformed != std::string_view::npos) {
        const auto linesBefore = std::ranges::count(text.substr(0, malformed), '\n');
        return refuse(static_cast<uint32_t>(linesBefore + 1),
                      "the file is not in UTF-8: byte " + std::to_string(malformed) +
                          " begins no character; save it as UTF-8, or convert it with iconv");
    }
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    return text;
}

std::optional<std::string> unicodeTextOfFile(const NSData& file, CaptionProblem* error) {
    std::string_view bytes = file.view();
    const bool isBigEndian = bytes.starts_with(kBigEndianMark);
    if (!isBigEndian && !bytes.starts_with(kLittleEndianMark)) {
        const auto text = utf8TextOfFile(file, error);
        return text ? std::optional<std::string>(*text) : std::nullopt;
    }
    if (bytes.size() % 2 != 0) {
        if (error) {
            *error = {CaptionProblem::malformed, 1,
                      "the file is in UTF-16 and ends within a character; fetch it again, or save it as UTF-8"};
        }
        return {};
    }
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (size_t i = 2; i < bytes.size(); i += 2) {
        const auto first = static_cast<uint8_t>(bytes[i]);
        const auto second = static_cast<uint8_t>(bytes[i + 1]);
        units += static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    return utf8FromUtf16(units);
}

std::string withLineFeeds(std::string_view text) {
    std::string lines;
    lines.reserve(text.size());
    while (true) {
        const size_t end = text.find('\r');
        lines += text.substr(0, end);
        if (end == std::string_view::npos) return lines;
        lines += '\n';
        text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
    }
}

}  // namespace qz
