#include "captions/CaptionEncoding.h"

#include <algorithm>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {
namespace {

constexpr std::string_view kReplacement = "\uFFFD";

/// The malformed UTF-8 in a text.
struct Damage {
    /// The number of malformed sequences.
    size_t count = 0;
    /// The offset of the first one, or npos.
    size_t first = std::string_view::npos;
    /// The number of well-formed characters of more than one byte.
    size_t wholeCharacters = 0;
};

/// Calls `piece` with each stretch of well-formed characters and each malformed sequence.
template <class Piece>
void forEachPiece(std::string_view text, const Piece& piece) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    size_t begin = 0;
    for (size_t i = 0; i < text.size();) {
        const size_t start = i;
        UChar32 character = 0;
        U8_NEXT(bytes, i, text.size(), character);
        if (character >= 0) continue;
        piece(text.substr(begin, start - begin), true);
        piece(text.substr(start, i - start), false);
        begin = i;
    }
    piece(text.substr(begin), true);
}

Damage damageOf(std::string_view text) {
    Damage damage;
    forEachPiece(text, [&](std::string_view piece, bool isWhole) {
        if (isWhole) {
            // Each has one lead byte.
            damage.wholeCharacters += static_cast<size_t>(
                std::ranges::count_if(piece, [](char c) { return static_cast<uint8_t>(c) >= 0xC0; }));
        } else if (damage.count++ == 0) {
            damage.first = static_cast<size_t>(piece.data() - text.data());
        }
    });
    return damage;
}

uint32_t lineAt(std::string_view text, size_t offset) {
    return static_cast<uint32_t>(std::ranges::count(text.substr(0, offset), '\n') + 1);
}

/// The text of a file without its byte-order mark.
std::string repaired(std::string_view file, const Damage& damage, CaptionProblems& problems) {
    if (damage.count == 0) return std::string(withoutMark(file));
    std::string text;
    text.reserve(file.size());
    forEachPiece(file, [&](std::string_view piece, bool isWhole) { text += isWhole ? piece : kReplacement; });
    problems.add(CaptionProblem::notShown, lineAt(file, damage.first),
                 "byte " + std::to_string(damage.first) +
                     " of the file begins no character of UTF-8; U+FFFD stands for " +
                     (damage.count == 1 ? "it" : "it and " + std::to_string(damage.count - 1) + " more") +
                     "; save the file as UTF-8, or convert it with iconv");
    return std::string(withoutMark(text));
}

constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

bool seemsUtf16(std::string_view text) {
    if (text.starts_with(kLittleEndianMark) || text.starts_with(kBigEndianMark)) return true;
    // Without a mark, the first character is ASCII, so one of its bytes is zero.
    return text.size() > 1 && (text[0] == '\0') != (text[1] == '\0');
}

std::nullopt_t refuse(CaptionProblem* error, uint32_t line, std::string message) {
    if (error) *error = {CaptionProblem::malformed, line, std::move(message)};
    return std::nullopt;
}

std::nullopt_t refuseUtf16(CaptionProblem* error) {
    return refuse(error, 1, "the file is in UTF-16; save it as UTF-8");
}

// Its mark begins like that of UTF-16.
bool isUtf32(std::string_view bytes) {
    return bytes.starts_with(std::string_view("\xFF\xFE\0\0", 4)) ||
           bytes.starts_with(std::string_view("\0\0\xFE\xFF", 4));
}

std::nullopt_t refuseDamage(std::string_view text, const Damage& damage, CaptionProblem* error) {
    return refuse(error, lineAt(text, damage.first),
                  "the file is not in UTF-8: byte " + std::to_string(damage.first) +
                      " begins no character; save it as UTF-8, or convert it with iconv");
}

}  // namespace

std::string_view withoutMark(std::string_view text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.substr(text.starts_with(kMark) ? kMark.size() : 0);
}

std::optional<std::string_view> utf8TextOfFile(const NSData& file, CaptionProblem* error) {
    const std::string_view text = file.view();
    if (seemsUtf16(text)) return refuseUtf16(error);
    const Damage damage = damageOf(text);
    if (damage.count > 0) return refuseDamage(text, damage, error);
    return withoutMark(text);
}

std::optional<std::string> repairedTextOfFile(const NSData& file, CaptionProblems& problems, CaptionProblem* error) {
    const std::string_view text = file.view();
    if (seemsUtf16(text)) return refuseUtf16(error);
    return repaired(text, damageOf(text), problems);
}

std::optional<std::string> unicodeTextOfFile(const NSData& file, CaptionProblems& problems, CaptionProblem* error) {
    const std::string_view bytes = file.view();
    if (isUtf32(bytes)) return refuse(error, 1, "the file is in UTF-32; save it as UTF-8");
    const bool isBigEndian = bytes.starts_with(kBigEndianMark);
    if (!isBigEndian && !bytes.starts_with(kLittleEndianMark)) {
        if (seemsUtf16(bytes)) return refuseUtf16(error);
        const Damage damage = damageOf(bytes);
        if (damage.count > 0 && damage.count >= damage.wholeCharacters) return refuseDamage(bytes, damage, error);
        return repaired(bytes, damage, problems);
    }
    if (bytes.size() % 2 != 0)
        return refuse(error, 1,
                      "the file is in UTF-16 and ends inside a character; fetch it again, or save it as UTF-8");
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (size_t i = 2; i < bytes.size(); i += 2) {
        const auto first = static_cast<uint8_t>(bytes[i]);
        const auto second = static_cast<uint8_t>(bytes[i + 1]);
        units += static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    for (size_t i = 0, line = 1; i < units.size(); ++i) {
        line += units[i] == u'\n';
        if (!U16_IS_SURROGATE(units[i])) continue;
        if (U16_IS_LEAD(units[i]) && i + 1 < units.size() && U16_IS_TRAIL(units[i + 1])) {
            ++i;
            continue;
        }
        problems.addOnce(CaptionProblem::notShown, static_cast<uint32_t>(line),
                         "the file has lone UTF-16 surrogates; they are replaced by U+FFFD");
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
