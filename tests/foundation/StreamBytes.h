#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/foundation/NSData.h"

namespace qz::test {

/// Writes the bytes of a typed stream of either byte order as they are told, knowing no tables, so that streams that
/// our own writer would never write can be made, and its output be checked.
class StreamBytes {
public:
    explicit StreamBytes(bool isBigEndian = false) : isBigEndian_(isBigEndian) {
        byte(4).byte(11).raw(isBigEndian ? "typedstream" : "streamtyped").byte(0x81).word(1000, 2);
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
