#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/CaptionFile.h"

namespace qz {

struct WrittenCaptions {
    /// In UTF-8, with line feeds.
    std::string file;
    /// What the file will not hold of the cues' annotations and former markup, one line each, in the order of the cues:
    /// "title 5: <lang he> is gone".
    std::vector<std::string> losses;
};

/// Writes captions as a WebVTT file that is read back as the same cues but for the losses: texts, annotations, times to
/// the millisecond, identifiers and settings; and with them header, preambles and trailer to the letter (see
/// CueTextWriter.h). `line` and `placement` of the cues are not looked at; a `header` that does not begin as WebVTT
/// does is left out.
///
/// None, with one line in `reason` that names the cue, counted from 1, when a cue has no such form.
std::optional<WrittenCaptions> writeWebVTT(const CaptionFile& captions, const QzAnnoPalette& palette,
                                           std::string& reason);

/// The settings that say the placement, "line:0 align:left"; a row is the line nearest to it.
std::string settingsOfPlacement(const CuePlacement& placement);

}  // namespace qz
