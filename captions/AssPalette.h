#pragma once

#include <string>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "captions/AssScript.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// A palette of a script's styles: the one named "Default", or else the first, is the global annotation, and the others
/// are annotations that hold what they have different from it. Lengths are scaled so that the shorter side of the
/// screen is 1080 points. Fonts are those of the library, which becomes the palette's. `losses` receives a line for
/// each kind of thing that a palette cannot hold.
Ref<QzAnnoPalette> paletteOfAss(const AssScript& script, const NSFont::Library& library,
                                std::vector<std::string>& losses);

/// All that an annotation takes from a style, or the part of it that differs from another style. `scale` is the length
/// of a pixel of the script in points. Bold and italic are attributes of their own, so that they also apply to a
/// palette's font.
///@{
ObjectMap attributesOfAssStyle(const AssStyle& style, double scale, const NSFont::Library& library);
ObjectMap differencesOfAssStyle(const AssStyle& style, const AssStyle& global, double scale,
                                const NSFont::Library& library);
///@}

Ref<NSColor> colorOf(const CaptionColour& colour);

}  // namespace qz
