#pragma once

#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "captions/LooseKeys.h"

namespace qz {

/// What becomes of the names in a caption file. Made of a palette wherever one is given for it.
struct CueNames {
    // NOLINTNEXTLINE(google-explicit-constructor)
    CueNames(const QzAnnoPalette& ofPalette, LooseKeys* forOthers = nullptr) : palette(ofPalette), others(forOthers) {}

    const QzAnnoPalette& palette;
    /// Gives the keys of the names that the palette lacks, so that an editor keeps them with the text; without it they
    /// add nothing.
    LooseKeys* others;
};

}  // namespace qz
