#pragma once

#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSLayoutManager.h"

namespace qz {

/// What the characters of a run ask of the drawing of their glyphs.
struct NSLayoutManager::RunAppearance {
    Range characters;
    Ref<NSFont> font;
    Ref<NSColor> color;
    float obliqueness = 0;
    /// Whether the colour stands for every glyph's own.
    bool isSilhouette = false;
};

}  // namespace qz
