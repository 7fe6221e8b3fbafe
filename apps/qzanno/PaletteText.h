#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz::tool {

// An annotation's attributes in the words of the palette table; empty if they set nothing.

/// "Noto Sans Bold 64", with "(missing)" if the library does not have the font.
std::string fontText(const NSDictionary& attributes, const NSFont::Library& library);
/// Colour, kerning, slant, baseline shift, leading, and the layers: "#ffffff; layer 1 9 #0a0d17; layer 2 11 {5, 6}
/// #00000073".
std::string styleText(const NSDictionary& attributes);
/// Alignments, margins or bounding box, and the box around the text: "bottom, centred; margins 160 160 90 90".
std::string frameText(const NSDictionary& attributes);

}  // namespace qz::tool
