#pragma once

#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "captions/AssScript.h"

namespace qz {

/// A palette of a script's styles: the one named "Default", or else the first, is the global annotation, and the others
/// are annotations that hold what they have different from it. Lengths are scaled so that the shorter side of the
/// screen is 1080 points. `losses` receives a line for each kind of thing that a palette has not.
Ref<QzAnnoPalette> paletteOfAss(const AssScript& script, std::vector<std::string>& losses);

}  // namespace qz
