#include "apps/qzanno/Sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qz::tool {
namespace {

// The first 32 bits of the fractions of the cube roots of the first 64 primes.
constexpr uint32_t kRounds[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void writeBigEndian(uint64_t number, uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(number >> (8 * (count - 1 - i)));
}

}  // namespace

void Sha256::add(std::span<const uint8_t> bytes) {
    size_t filled = length_ % block_.size();
    length_ += bytes.size();
    while (!bytes.empty()) {
        if (filled == 0 && bytes.size() >= block_.size()) {
            addBlock(bytes.data());
            bytes = bytes.subspan(block_.size());
            continue;
        }
        const size_t count = std::min(bytes.size(), block_.size() - filled);
        std::memcpy(block_.data() + filled, bytes.data(), count);
        filled += count;
        bytes = bytes.subspan(count);
        if (filled < block_.size()) return;
        addBlock(block_.data());
        filled = 0;
    }
}

void Sha256::add(std::string_view bytes) {
    add({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

void Sha256::addNumber(uint64_t number) {
    uint8_t bytes[8];
    writeBigEndian(number, bytes, sizeof bytes);
    add(bytes);
}

void Sha256::addText(std::string_view text) {
    addNumber(text.size());
    add(text);
}

Sha256::Digest Sha256::digest() {
    const uint64_t bits = length_ * 8;
    // A set bit, zeros up to the last 8 bytes of a block, the length.
    const uint8_t padding[64] = {0x80};
    const size_t filled = length_ % block_.size();
    add(std::span(padding, (filled < 56 ? 56 : 120) - filled));
    addNumber(bits);
    Digest digest;
    for (size_t i = 0; i < state_.size(); ++i) writeBigEndian(state_[i], digest.data() + 4 * i, 4);
    return digest;
}

void Sha256::addBlock(const uint8_t* block) {
    uint32_t schedule[64];
    for (size_t i = 0; i < 16; ++i) {
        const uint8_t* const word = block + 4 * i;
        schedule[i] = uint32_t{word[0]} << 24 | uint32_t{word[1]} << 16 | uint32_t{word[2]} << 8 | word[3];
    }
    for (size_t i = 16; i < 64; ++i) {
        const uint32_t early = schedule[i - 15];
        const uint32_t late = schedule[i - 2];
        schedule[i] = schedule[i - 16] + (std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3) + schedule[i - 7] +
                      (std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state_;
    for (size_t i = 0; i < 64; ++i) {
        const uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) +
                               kRounds[i] + schedule[i];
        const uint32_t second = (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const uint32_t worked[8] = {a, b, c, d, e, f, g, h};
    for (size_t i = 0; i < state_.size(); ++i) state_[i] += worked[i];
}

std::string hexadecimal(std::span<const uint8_t> bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const uint8_t byte : bytes) text += {digits[byte >> 4], digits[byte & 15]};
    return text;
}

std::string sha256Of(std::span<const uint8_t> bytes) {
    Sha256 hash;
    hash.add(bytes);
    return hexadecimal(hash.digest());
}

}  // namespace qz::tool
