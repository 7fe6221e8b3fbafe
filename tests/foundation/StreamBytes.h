#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"

namespace qz::test {

/// Writes the bytes of a typed stream of either byte order verbatim, without tables, to make streams that our writer
/// would never write, and to check its output.
class StreamBytes {
public:
    explicit StreamBytes(bool isBigEndian = false) : isBigEndian_(isBigEndian) {
        byte(4).byte(11).raw(isBigEndian ? "typedstream" : "streamtyped").byte(0x81).word(1000, 2);
    }
    /// A little-endian stream described by words, see `add`.
    explicit StreamBytes(const std::string& words) : StreamBytes() { add(words); }
    explicit StreamBytes(const char* words) : StreamBytes() { add(words); }

    /// Words stand for bytes: `(` begins an object and `)` ends one, `~` is nil, `<i>` a new shared string (types,
    /// mostly), `^3` a reference to an entry, `Name:1` a new class of that version with its superclass yet to come,
    /// `'ab'` the characters themselves, `w5` and `l5` integers of two and four bytes, and a number one byte.
    StreamBytes& add(std::string_view words) {
        while (true) {
            words.remove_prefix(std::min(words.find_first_not_of(' '), words.size()));
            if (words.empty()) return *this;
            const char first = words.front();
            const char last = first == '<' ? '>' : first == '\'' ? '\'' : ' ';
            const size_t end = std::min(words.find(last, 1), words.size());
            const std::string word(words.substr(0, end));
            words.remove_prefix(std::min(end + 1, words.size()));
            const auto number = [&word](size_t from) { return std::strtoll(word.c_str() + from, nullptr, 0); };
            if (first == '(')
                object();
            else if (first == ')')
                this->end();
            else if (first == '~')
                nil();
            else if (first == '<')
                text(std::string_view(word).substr(1));
            else if (first == '\'')
                raw(std::string_view(word).substr(1));
            else if (first == '^')
                ref(static_cast<uint32_t>(number(1)));
            else if (first == 'w')
                byte(0x81).word(static_cast<uint64_t>(number(1)), 2);
            else if (first == 'l')
                byte(0x82).word(static_cast<uint64_t>(number(1)), 4);
            else if (first >= 'A' && first <= 'Z')
                cls(word.substr(0, word.find(':')), std::atoi(word.c_str() + word.find(':') + 1));
            else
                byte(static_cast<int>(number(0)));
        }
    }

    StreamBytes& byte(int value) {
        bytes_ += static_cast<char>(value);
        return *this;
    }
    StreamBytes& raw(std::string_view text) {
        bytes_ += text;
        return *this;
    }
    StreamBytes& word(uint64_t value, int size) {
        for (int i = 0; i < size; ++i) byte(static_cast<int>(value >> 8 * (isBigEndian_ ? size - 1 - i : i) & 0xFF));
        return *this;
    }
    /// A new shared string; a type string, mostly.
    StreamBytes& text(std::string_view text) {
        byte(0x84);
        if (text.size() < 128)
            byte(static_cast<int>(text.size()));
        else
            byte(0x82).word(text.size(), 4);
        return raw(text);
    }
    /// A reference to an entry of either table; those below 238 take one byte.
    StreamBytes& ref(uint32_t entry) {
        if (entry < 238) return byte(static_cast<int>(entry) - 110);
        return byte(0x82).word(entry - 110, 4);
    }
    /// A new class with a superclass yet to come.
    StreamBytes& cls(std::string_view name, int version = 0) { return byte(0x84).text(name).byte(version); }
    StreamBytes& nil() { return byte(0x85); }
    /// The head of a new object; its class comes next.
    StreamBytes& object() { return byte(0x84); }
    StreamBytes& end() { return byte(0x86); }

    const std::string& bytes() const { return bytes_; }
    Ref<NSData> data() const { return NSData::dataWithBytes(std::string_view(bytes_)); }

private:
    const bool isBigEndian_;
    std::string bytes_;
};

}  // namespace qz::test
