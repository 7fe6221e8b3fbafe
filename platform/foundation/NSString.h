#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Range.h"

namespace qz {

/// An immutable text in UTF-16. Lengths and positions count UTF-16 units; lone surrogates are kept as they are.
class NSString final : public NSObject {
public:
    static Ref<NSString> string();
    /// Malformed bytes become U+FFFD, one for each maximal malformed sequence.
    static Ref<NSString> stringWithUTF8String(std::string_view utf8);
    static Ref<NSString> stringWithCharacters(std::u16string characters);

    uint32_t length() const { return static_cast<uint32_t>(characters_.size()); }
    const std::u16string& characters() const { return characters_; }
    char16_t characterAtIndex(uint32_t index) const { return characters_.at(index); }
    /// In UTF-8; lone surrogates become U+FFFD.
    std::string utf8() const;
    /// None when the range reaches beyond the text.
    Ref<NSString> substringWithRange(Range range) const;
    bool isEqualToString(const NSString& other) const { return characters_ == other.characters_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override { return utf8(); }
    std::string className() const override { return "NSString"; }

private:
    explicit NSString(std::u16string characters);

    const std::u16string characters_;
    // Made when it is first asked for, which long texts are not: each keystroke makes one. 0 until then. Threads that
    // ask at once find the same.
    mutable std::atomic<size_t> hash_ = 0;
};

std::u16string utf16FromUtf8(std::string_view utf8);
std::string utf8FromUtf16(std::u16string_view utf16);

inline namespace literals {
/// `"GLOBALS"_ns`: the string of a UTF-8 literal.
inline Ref<NSString> operator""_ns(const char* utf8, size_t size) {
    return NSString::stringWithUTF8String({utf8, size});
}
}  // namespace literals

}  // namespace qz
