#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// A range of text: `location` and `length` in UTF-16 units.
struct Range {
    uint32_t location = 0;  ///< index of the first unit, from 0
    uint32_t length = 0;    ///< in units; may be 0

    /// One past the last position. 64 bits wide, since location + length may exceed 2^32.
    uint64_t end() const { return uint64_t{location} + length; }
    /// Whether the index lies in the range; an empty range contains no index.
    bool contains(uint32_t index) const { return index >= location && index < end(); }

    friend bool operator==(const Range&, const Range&) = default;
};

/// The overlap of two ranges, or (0, 0) if they do not overlap.
inline Range intersection(Range a, Range b) {
    const uint32_t location = a.location > b.location ? a.location : b.location;
    const uint64_t end = a.end() < b.end() ? a.end() : b.end();
    return end > location ? Range{location, static_cast<uint32_t>(end - location)} : Range{};
}

/// An immutable text in UTF-16. Lengths and positions count UTF-16 units; lone surrogates are kept as they are.
///
/// A text has at most 2^31 - 1 units; making a longer one throws `std::bad_alloc`. Threads may share a text.
class NSString final : public NSObject {
public:
    /// The empty text; always the same object.
    static Ref<NSString> string();
    /// Converts as `utf16FromUtf8` does.
    static Ref<NSString> stringWithUTF8String(std::string_view utf8);
    /// Keeps the units as they are, well-formed or not.
    static Ref<NSString> stringWithCharacters(std::u16string characters);

    /// The number of UTF-16 units.
    uint32_t length() const { return static_cast<uint32_t>(characters_.size()); }
    /// Valid as long as the text lives.
    const std::u16string& characters() const { return characters_; }
    /// Converts as `utf8FromUtf16` does.
    std::string utf8() const;
    /// Returns null if the range reaches beyond the text.
    Ref<NSString> substringWithRange(Range range) const;
    /// Compares unit by unit: composed and decomposed forms of a character differ.
    bool isEqualToString(const NSString& other) const { return characters_ == other.characters_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override { return utf8(); }
    std::string className() const override { return "NSString"; }

private:
    explicit NSString(std::u16string characters);

    const std::u16string characters_;
    // Computed on first use, 0 until then: each keystroke makes a long text that is never hashed. Racing threads
    // compute the same value.
    mutable std::atomic<size_t> hash_ = 0;
};

/// Malformed bytes become U+FFFD, one for each maximal malformed sequence. Throws `std::bad_alloc` for more than
/// 2^31 - 1 bytes.
std::u16string utf16FromUtf8(std::string_view utf8);
/// Lone surrogates become U+FFFD. Throws `std::bad_alloc` if three bytes per unit, which it allocates at first, exceed
/// 2^31 - 1.
std::string utf8FromUtf16(std::u16string_view utf16);

inline namespace literals {
/// `"GLOBALS"_ns`: the string of a UTF-8 literal.
inline Ref<NSString> operator""_ns(const char* utf8, size_t size) {
    return NSString::stringWithUTF8String({utf8, size});
}
}  // namespace literals

}  // namespace qz
