#include "platform/text/TextCoverage.h"

#include <string>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf16.h>

namespace qz {
namespace {

constexpr char32_t kTextPresentation = 0xFE0E;
constexpr char32_t kEmojiPresentation = 0xFE0F;
constexpr char32_t kReplacementCharacter = 0xFFFD;

bool has(char32_t character, UProperty property) {
    return u_hasBinaryProperty(static_cast<UChar32>(character), property);
}

bool isShownAsEmoji(char32_t character, char32_t next) {
    if (next == kEmojiPresentation) return has(character, UCHAR_EMOJI);
    return next != kTextPresentation && character >= 0x80 && has(character, UCHAR_EMOJI_PRESENTATION);
}

bool isFormRight(char32_t character, char32_t next, bool hasColourGlyphs) {
    if (hasColourGlyphs) return next != kTextPresentation || !has(character, UCHAR_EMOJI);
    return !isShownAsEmoji(character, next);
}

bool isCharacterCovered(char32_t character, const std::function<bool(char32_t)>& hasGlyph) {
    if (isLayoutControl(character) || has(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT)) return true;
    if (hasGlyph(character)) return true;
    // Shaping substitutes the plain space or hyphen for these.
    if (u_charType(static_cast<UChar32>(character)) == U_SPACE_SEPARATOR) return hasGlyph(U' ');
    return character == U'\u2011' && hasGlyph(U'\u2010');
}

bool areCharactersCovered(std::u16string_view text, const std::function<bool(char32_t)>& hasGlyph,
                          std::optional<bool> hasColourGlyphs) {
    size_t nextIndex = 0;
    char32_t next = nextCharacter(text, nextIndex);
    for (size_t index = 0; index < text.size();) {
        const char32_t character = next;
        index = nextIndex;
        next = nextCharacter(text, nextIndex);
        if (hasColourGlyphs && !isFormRight(character, next, *hasColourGlyphs)) return false;
        if (!isCharacterCovered(character, hasGlyph)) return false;
    }
    return true;
}

std::u16string composed(std::u16string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* const normalizer = icu::Normalizer2::getNFCInstance(error);
    if (U_FAILURE(error)) return std::u16string(text);
    const icu::UnicodeString source(false, text.data(), static_cast<int32_t>(text.size()));
    const icu::UnicodeString result = normalizer->normalize(source, error);
    return U_FAILURE(error) ? std::u16string(text)
                            : std::u16string(result.getBuffer(), static_cast<size_t>(result.length()));
}

}  // namespace

char32_t nextCharacter(std::u16string_view text, size_t& index) {
    if (index >= text.size()) return 0;
    UChar32 character = 0;
    U16_NEXT(text.data(), index, text.size(), character);
    return U_IS_SURROGATE(character) ? kReplacementCharacter : static_cast<char32_t>(character);
}

bool isLayoutControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 || character == 0x2029;
}

bool hasEmojiForm(std::u16string_view cluster) {
    size_t index = 0;
    const char32_t first = nextCharacter(cluster, index);
    size_t nextIndex = index;
    const char32_t second = nextCharacter(cluster, nextIndex);
    constexpr char32_t kKeycap = 0x20E3;
    return isShownAsEmoji(first, second) || cluster.find(static_cast<char16_t>(kKeycap)) != cluster.npos;
}

bool belongsToAnyScript(std::u16string_view cluster) {
    for (size_t index = 0; index < cluster.size();) {
        const char32_t character = nextCharacter(cluster, index);
        UErrorCode error = U_ZERO_ERROR;
        const UScriptCode script = uscript_getScript(static_cast<UChar32>(character), &error);
        const bool isShared = script == USCRIPT_COMMON || script == USCRIPT_INHERITED;
        if (U_FAILURE(error) || !isShared || isLayoutControl(character)) return false;
        if (u_isalpha(static_cast<UChar32>(character))) return false;
    }
    return !hasEmojiForm(cluster);
}

bool isTextCovered(std::u16string_view text, const std::function<bool(char32_t)>& hasGlyph,
                   std::optional<bool> hasColourGlyphs) {
    // Shaping composes a letter and its marks if the font has only the composed letter.
    return areCharactersCovered(text, hasGlyph, hasColourGlyphs) ||
           areCharactersCovered(composed(text), hasGlyph, hasColourGlyphs);
}

}  // namespace qz
