#pragma once

#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSLayoutManager.h"

namespace qz {

/// How the glyphs of a run are drawn.
struct NSLayoutManager::RunAppearance {
    Range characters;
    Ref<NSFont> font;
    Ref<NSColor> color;
    float obliqueness = 0;
    /// Whether the colour replaces the glyphs' own colours.
    bool isSilhouette = false;
};

}  // namespace qz
