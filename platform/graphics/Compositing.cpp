#include "platform/graphics/Compositing.h"

#include <algorithm>
#include <cstring>

namespace qz {
namespace {

// Alpha times coverage, the weight of a colour in a pixel, runs to 255 x 255. This odd number has no halves to round.
constexpr uint32_t kWeightMax = 255 * 255;

// (c w + d (W - w)) / W rounded, W the greatest weight, from c w. The sum is at most 255 x 255 x 255 and fits in 24
// bits.
uint8_t mixed(uint32_t weightedColor, uint32_t old, uint32_t weight) {
    return static_cast<uint8_t>((weightedColor + old * (kWeightMax - weight) + kWeightMax / 2) / kWeightMax);
}

// Premultiplied source over destination is a mix of the straight colour, its own alpha counted as 255, into each
// component: d' = c a m + d (1 - a m), and d'alpha = 255 a m + dalpha (1 - a m).
template <int pixelCount>
void blendPixels(const uint8_t (&opaque)[4], uint32_t weight, uint8_t* pixels) {
    for (int i = 0; i < 4 * pixelCount; ++i) pixels[i] = mixed(opaque[i % 4] * weight, pixels[i], weight);
}

uint64_t eightBytesAt(const uint8_t* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

void blendPixel(const uint8_t (&opaque)[4], uint32_t weight, uint8_t* pixel) {
    if (weight == kWeightMax) {
        std::memcpy(pixel, opaque, 4);
    } else if (weight > 0) {
        blendPixels<1>(opaque, weight, pixel);
    }
}

// Most of a shape's box is wholly outside it or wholly inside: eight such pixels go at a time.
void blendRow(const uint8_t* coverage, int32_t width, StraightColor color, uint8_t* pixels) {
    const uint8_t opaque[4] = {color.red, color.green, color.blue, 255};
    int32_t x = 0;
    while (x < width) {
        uint8_t* const pixel = pixels + size_t{4} * static_cast<size_t>(x);
        const uint64_t next = x + 8 <= width ? eightBytesAt(coverage + x) : 1;
        if (next == 0) {
            x += 8;
        } else if (next == UINT64_MAX && color.alpha == 255) {
            for (int i = 0; i < 8; ++i) std::memcpy(pixel + 4 * i, opaque, 4);
            x += 8;
        } else if (next == UINT64_MAX) {
            blendPixels<8>(opaque, color.alpha * 255u, pixel);
            x += 8;
        } else {
            blendPixel(opaque, uint32_t{color.alpha} * coverage[x], pixel);
            ++x;
        }
    }
}

// s + d (1 - sa), by 255 as above.
void blendPremultipliedPixel(const uint8_t* source, uint8_t* target) {
    const uint32_t alpha = source[3];
    for (int i = 0; i < 4; ++i) {
        const uint32_t sum = (source[i] * 255u + target[i] * (255u - alpha) + 127u) / 255u;
        target[i] = static_cast<uint8_t>(std::min(sum, 255u));
    }
}

void blendPremultipliedRow(const uint8_t* source, int32_t width, uint8_t* target) {
    for (int32_t x = 0; x < width; ++x, source += 4, target += 4) {
        uint32_t pixel;
        std::memcpy(&pixel, source, sizeof pixel);
        if (pixel == 0) continue;
        if (source[3] == 255) {
            std::memcpy(target, source, 4);
        } else {
            blendPremultipliedPixel(source, target);
        }
    }
}

PixelRect boundsOf(const NSBitmapImageRep& bitmap) {
    return {0, 0, bitmap.pixelsWide(), bitmap.pixelsHigh()};
}

uint8_t* pixelAt(NSBitmapImageRep& bitmap, int32_t x, int32_t y) {
    return bitmap.row(y) + size_t{4} * static_cast<size_t>(x);
}

}  // namespace

bool isRGBA8(const NSBitmapImageRep& bitmap) {
    return bitmap.bitsPerSample() == 8 && bitmap.samplesPerPixel() == 4 && bitmap.bitsPerPixel() == 32 &&
           bitmap.hasAlpha();
}

void blendMask(const CoverageMask& mask, StraightColor color, NSBitmapImageRep& target) {
    const PixelRect visible = intersection(mask.box, boundsOf(target));
    if (color.alpha == 0) return;
    for (int32_t i = 0; i < visible.height; ++i) {
        const int32_t y = visible.y + i;
        blendRow(mask.row(y - mask.box.y) + (visible.x - mask.box.x), visible.width, color,
                 pixelAt(target, visible.x, y));
    }
}

void blendBitmap(const NSBitmapImageRep& source, int32_t x, int32_t y, NSBitmapImageRep& target) {
    const PixelRect visible = intersection({x, y, source.pixelsWide(), source.pixelsHigh()}, boundsOf(target));
    for (int32_t i = 0; i < visible.height; ++i) {
        const int64_t sourceY = int64_t{visible.y} + i - y, sourceX = int64_t{visible.x} - x;
        blendPremultipliedRow(source.row(static_cast<int32_t>(sourceY)) + 4 * sourceX, visible.width,
                              pixelAt(target, visible.x, visible.y + i));
    }
}

}  // namespace qz
