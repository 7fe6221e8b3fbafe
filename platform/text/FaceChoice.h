#pragma once

#include <span>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/text/FontSynthesis.h"

namespace qz {

/// A font and the synthesis that it needs.
struct FaceChoice {
    const InstalledFont* font;
    FontSynthesis synthesis;
};

/// The fonts of a family, sorted by closeness to `font` with these traits. Prefers its width, and its weight and slant
/// as far as the traits allow; a real bold face that needs slanting comes before an italic one that needs emboldening.
std::vector<FaceChoice> facesWithTraits(const InstalledFont& font, FontTraits traits,
                                        std::span<const InstalledFont* const> family);

}  // namespace qz
