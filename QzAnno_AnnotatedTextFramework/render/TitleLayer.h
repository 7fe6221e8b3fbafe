#pragma once

#include <cstdint>

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// A layer beneath the glyphs of a run, as its attributes describe it. Layer 2 lies beneath layer 1.
struct TitleLayer {
    static constexpr uint32_t kFirst = 1;
    static constexpr uint32_t kSecond = 2;

    static TitleLayer numbered(uint32_t number, const NSDictionary& attributes);

    /// A colour that hides next to nothing is not worth drawing.
    bool isVisible() const { return color && color->alphaComponent() > 0.001f; }

    /// Of the pen that goes along the outlines, in points; a width that is no finite number counts as 0.
    float width = 0;
    /// In points, y growing downward.
    NSPoint offset;
    Ref<NSColor> color;
};

}  // namespace qz
