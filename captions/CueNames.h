#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/CaptionLooks.h"
#include "captions/LooseKeys.h"

namespace qz {

/// How the names in a caption file are resolved. Converts implicitly from a palette, or from a palette with the looks
/// of files.
struct CueNames {
    // NOLINTBEGIN(google-explicit-constructor)
    CueNames(const QzAnnoPalette& ofPalette, LooseKeys* forOthers = nullptr) : palette(ofPalette), others(forOthers) {}
    CueNames(CaptionLooks& ofFiles) : palette(*ofFiles.palette()), others(nullptr), looks(&ofFiles) {}
    // NOLINTEND(google-explicit-constructor)
    /// For an editor, which keeps its own keys for the names and collects their looks in the file.
    CueNames(const QzAnnoPalette& ofPalette, LooseKeys& forOthers, CaptionLooks& ofFiles)
        : palette(ofPalette), others(&forOthers), looks(&ofFiles) {}

    const QzAnnoPalette& palette;
    /// Supplies keys for names missing from the palette, so that an editor keeps them with the text; if null, they add
    /// nothing. It also keeps a speaker's name if the palette's "v" is used for the voice.
    LooseKeys* others;
    /// Receives the looks defined by the file; if null, only the palette's are used.
    CaptionLooks* looks = nullptr;
};

}  // namespace qz
