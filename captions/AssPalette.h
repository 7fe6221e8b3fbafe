#pragma once

#include <string>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "captions/AssScript.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// Makes a palette from a script's styles: the style "Default", or else the first, becomes the global annotation, and
/// the others annotations with their differences from it. Lengths are scaled so that the shorter side of the screen is
/// 1080 points. Fonts come from the library, which becomes the palette's. `losses` receives one line for each kind of
/// feature that a palette cannot hold.
Ref<QzAnnoPalette> paletteOfAss(const AssScript& script, const NSFont::Library& library,
                                std::vector<std::string>& losses);

/// The attributes of a style, or only those that differ from another style. `scale` is the length of a script pixel in
/// points. Bold and italic are separate attributes, so that they also apply to a palette's font.
///@{
ObjectMap attributesOfAssStyle(const AssStyle& style, double scale, const NSFont::Library& library);
ObjectMap differencesOfAssStyle(const AssStyle& style, const AssStyle& global, double scale,
                                const NSFont::Library& library);
///@}

Ref<NSColor> colorOf(const CaptionColour& colour);

}  // namespace qz
