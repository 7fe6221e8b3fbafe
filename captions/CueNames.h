#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/CaptionLooks.h"
#include "captions/LooseKeys.h"

namespace qz {

/// What becomes of the names in a caption file. Made of a palette, or of one with the looks of files, wherever that is
/// given for it.
struct CueNames {
    // NOLINTBEGIN(google-explicit-constructor)
    CueNames(const QzAnnoPalette& ofPalette, LooseKeys* forOthers = nullptr) : palette(ofPalette), others(forOthers) {}
    CueNames(CaptionLooks& ofFiles) : palette(*ofFiles.palette()), others(nullptr), looks(&ofFiles) {}
    // NOLINTEND(google-explicit-constructor)
    /// For an editor, which lays its own keys of the names and collects the looks that they have in the file.
    CueNames(const QzAnnoPalette& ofPalette, LooseKeys& forOthers, CaptionLooks& ofFiles)
        : palette(ofPalette), others(&forOthers), looks(&ofFiles) {}

    const QzAnnoPalette& palette;
    /// Gives the keys of the names that the palette lacks, so that an editor keeps them with the text; without it they
    /// add nothing. A speaker's name is kept that way also where the palette's "v" stands for the voice.
    LooseKeys* others;
    /// Receives the looks that the file defines; without it those of the palette are all that there are.
    CaptionLooks* looks = nullptr;
};

}  // namespace qz
