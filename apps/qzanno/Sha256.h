#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qz::tool {

/// The SHA-256 of bytes that come in pieces (FIPS 180-4).
class Sha256 {
public:
    using Digest = std::array<uint8_t, 32>;

    void add(std::span<const uint8_t> bytes);
    void add(std::string_view bytes);
    /// A number, or a text with its length before it, so that what stands side by side cannot run together.
    void addNumber(uint64_t number);
    void addText(std::string_view text);
    /// Ends the message; nothing may be added afterwards.
    Digest digest();

private:
    void addBlock(const uint8_t* block);

    std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                      0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<uint8_t, 64> block_{};
    uint64_t length_ = 0;  // bytes
};

/// In small letters, as sha256sum writes them.
std::string hexadecimal(std::span<const uint8_t> bytes);

std::string sha256Of(std::span<const uint8_t> bytes);

}  // namespace qz::tool
