#pragma once

#include <cstdint>

#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// A colour with 8 bits per component, not premultiplied.
struct StraightColor {
    uint8_t red = 0, green = 0, blue = 0, alpha = 255;
};

/// Rounds components to the nearest integer, halves up.
inline StraightColor straightColorOf(const NSColor& color) {
    // In doubles, where the sum is exact.
    const auto byte = [](float component) { return static_cast<uint8_t>(component * 255 + 0.5); };
    return {byte(color.redComponent()), byte(color.greenComponent()), byte(color.blueComponent()),
            byte(color.alphaComponent())};
}

}  // namespace qz
