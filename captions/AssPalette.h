#pragma once

#include <string>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "captions/AssScript.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// A palette of a script's styles: the one named "Default", or else the first, is the global annotation, and the others
/// are annotations that hold what they have different from it. Lengths are scaled so that the shorter side of the
/// screen is 1080 points. `losses` receives a line for each kind of thing that a palette has not.
Ref<QzAnnoPalette> paletteOfAss(const AssScript& script, std::vector<std::string>& losses);

/// All that an annotation takes from a style, or what of that is different from another style. `scale` is the length of
/// a pixel of the script in points. Bold and italic letters are attributes of their own, so that a palette's font may
/// have them too.
///@{
ObjectMap attributesOfAssStyle(const AssStyle& style, double scale);
ObjectMap differencesOfAssStyle(const AssStyle& style, const AssStyle& global, double scale);
///@}

Ref<NSColor> colorOf(const CaptionColour& colour);

}  // namespace qz
