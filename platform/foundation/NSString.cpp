#include "QzAnno/platform/foundation/NSString.h"

#include <functional>
#include <limits>
#include <new>

#include <unicode/ustring.h>

namespace qz {
namespace {

constexpr UChar32 kReplacement = 0xFFFD;

// ICU counts in signed 32 bits.
template <class Text>
int32_t checkedLength(const Text& text) {
    if (text.size() > std::numeric_limits<int32_t>::max()) throw std::bad_alloc();
    return static_cast<int32_t>(text.size());
}

}  // namespace

std::u16string utf16FromUtf8(std::string_view utf8) {
    // No byte yields more than one unit.
    std::u16string utf16(utf8.size(), u'\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(utf16.data(), checkedLength(utf16), &length, utf8.data(), checkedLength(utf8), kReplacement,
                         nullptr, &status);
    utf16.resize(static_cast<size_t>(length));
    return utf16;
}

std::string utf8FromUtf16(std::u16string_view utf16) {
    // No unit yields more than three bytes.
    checkedLength(utf16);
    std::string utf8(utf16.size() * 3, '\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(utf8.data(), checkedLength(utf8), &length, utf16.data(), checkedLength(utf16), kReplacement,
                       nullptr, &status);
    utf8.resize(static_cast<size_t>(length));
    return utf8;
}

NSString::NSString(std::u16string characters) : characters_(std::move(characters)) {
    checkedLength(characters_);
}

size_t NSString::hash() const {
    size_t hash = hash_.load(std::memory_order_relaxed);
    if (hash == 0) {
        hash = std::hash<std::u16string>()(characters_);
        hash_.store(hash, std::memory_order_relaxed);
    }
    return hash;
}

Ref<NSString> NSString::string() {
    static const Ref<NSString> empty = stringWithCharacters({});
    return empty;
}

Ref<NSString> NSString::stringWithUTF8String(std::string_view utf8) {
    return stringWithCharacters(utf16FromUtf8(utf8));
}

Ref<NSString> NSString::stringWithCharacters(std::u16string characters) {
    return Ref<NSString>(new NSString(std::move(characters)));
}

std::string NSString::utf8() const {
    return utf8FromUtf16(characters_);
}

Ref<NSString> NSString::substringWithRange(Range range) const {
    if (range.end() > characters_.size()) return {};
    return stringWithCharacters(characters_.substr(range.location, range.length));
}

bool NSString::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* string = dynamic_cast<const NSString*>(&other);
    return string && isEqualToString(*string);
}

}  // namespace qz
