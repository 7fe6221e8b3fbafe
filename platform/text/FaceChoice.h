#pragma once

#include <span>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/text/FontSynthesis.h"

namespace qz {

/// A font, and what has to be made of it.
struct FaceChoice {
    const InstalledFont* font;
    FontSynthesis synthesis;
};

/// The fonts of a family, the one that comes nearest to the look of `font` with these traits first. Its width is kept,
/// and its weight and slant as far as the traits allow; a real bold face that has to be slanted comes before an italic
/// one that has to be emboldened.
std::vector<FaceChoice> facesWithTraits(const InstalledFont& font, FontTraits traits,
                                        std::span<const InstalledFont* const> family);

}  // namespace qz
