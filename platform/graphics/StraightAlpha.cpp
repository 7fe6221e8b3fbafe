#include "platform/graphics/StraightAlpha.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qz {
namespace {

// 255 * 2^16 / a, rounded up, replaces a division per colour: after adding half a unit, the product's upper bits are
// the nearest integer for every p up to a. The largest product, 255 * 255 * 2^16, fits in 32 bits.
constexpr uint32_t kShift = 16;

constexpr std::array<uint32_t, 256> factors() {
    std::array<uint32_t, 256> table{};
    for (uint32_t alpha = 1; alpha < 256; ++alpha) table[alpha] = ((255u << kShift) + alpha - 1) / alpha;
    return table;
}

constexpr std::array<uint32_t, 256> kFactors = factors();

}  // namespace

void unpremultiply(const uint8_t* pixels, size_t count, uint8_t* straight) {
    for (; count > 0; --count, pixels += 4, straight += 4) {
        const uint8_t alpha = pixels[3];
        if (alpha == 255) {
            std::memmove(straight, pixels, 4);
            continue;
        }
        for (int i = 0; i < 3; ++i) {
            const uint32_t color = (pixels[i] * kFactors[alpha] + (1u << (kShift - 1))) >> kShift;
            straight[i] = static_cast<uint8_t>(std::min(color, 255u));
        }
        straight[3] = alpha;
    }
}

}  // namespace qz
