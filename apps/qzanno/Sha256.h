#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <nettle/sha2.h>

namespace qz::tool {

/// The SHA-256 of bytes added in pieces (FIPS 180-4).
class Sha256 {
public:
    using Digest = std::array<uint8_t, SHA256_DIGEST_SIZE>;

    Sha256() { sha256_init(&context_); }

    void add(std::span<const uint8_t> bytes) { sha256_update(&context_, bytes.size(), bytes.data()); }
    void add(std::string_view bytes);
    /// Adds a number, or a text preceded by its length, so that adjacent values cannot run together.
    void addNumber(uint64_t number);
    void addText(std::string_view text);
    /// Ends the message and begins another one.
    Digest digest();

private:
    sha256_ctx context_;
};

/// In lower case, like sha256sum.
std::string hexadecimal(std::span<const uint8_t> bytes);

std::string sha256Of(std::span<const uint8_t> bytes);

}  // namespace qz::tool
