#include "apps/qzanno/Sha256.h"

#include <nettle/base16.h>

namespace qz::tool {

void Sha256::add(std::string_view bytes) {
    add({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

void Sha256::addNumber(uint64_t number) {
    uint8_t bytes[8];
    for (size_t i = 0; i < sizeof bytes; ++i) bytes[i] = static_cast<uint8_t>(number >> (56 - 8 * i));
    add(bytes);
}

void Sha256::addText(std::string_view text) {
    addNumber(text.size());
    add(text);
}

Sha256::Digest Sha256::digest() {
    Digest digest;
    sha256_digest(&context_, digest.size(), digest.data());
    return digest;
}

std::string hexadecimal(std::span<const uint8_t> bytes) {
    std::string text(BASE16_ENCODE_LENGTH(bytes.size()), '\0');
    base16_encode_update(text.data(), bytes.size(), bytes.data());
    return text;
}

std::string sha256Of(std::span<const uint8_t> bytes) {
    Sha256 hash;
    hash.add(bytes);
    return hexadecimal(hash.digest());
}

}  // namespace qz::tool
