#pragma once

#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "captions/CaptionLooks.h"
#include "captions/LooseKeys.h"

namespace qz {

/// What becomes of the names in a caption file. Made of a palette, or of one with the looks of files, wherever that is
/// given for it.
struct CueNames {
    // NOLINTBEGIN(google-explicit-constructor)
    CueNames(const QzAnnoPalette& ofPalette, LooseKeys* forOthers = nullptr) : palette(ofPalette), others(forOthers) {}
    CueNames(CaptionLooks& ofFiles, LooseKeys* forOthers = nullptr)
        : palette(*ofFiles.palette()), others(forOthers), looks(&ofFiles) {}
    // NOLINTEND(google-explicit-constructor)

    const QzAnnoPalette& palette;
    /// Gives the keys of the names that the palette lacks, so that an editor keeps them with the text; without it they
    /// add nothing. A speaker's name is kept that way also where the palette's "v" stands for the voice.
    LooseKeys* others;
    /// Receives the looks that the file defines; without it those of the palette are all that there are.
    CaptionLooks* looks = nullptr;
};

}  // namespace qz
