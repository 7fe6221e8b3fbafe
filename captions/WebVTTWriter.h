#pragma once

#include <optional>
#include <string>

#include "captions/CaptionFile.h"
#include "captions/CaptionWriter.h"

namespace qz {

/// Writes captions as a WebVTT file that reads back as the same cues except for the losses: texts, annotations, times
/// to the millisecond, identifiers and settings; and header, preambles and trailer verbatim (see CueTextWriter.h). Cues
/// without settings get those for their placement; a `header` that does not begin like WebVTT is left out. The file is
/// in UTF-8, with line feeds; losses are in the order of the cues: "title 5: <lang he> is gone".
///
/// Returns no value, with one line in `reason` that names the cue, counted from 1, if a cue cannot be written.
std::optional<WrittenCaptions> writeWebVTT(const CaptionFile& captions, const CaptionStage& stage, std::string& reason);

/// The settings for the placement, "line:0 align:left"; a row becomes the nearest line.
std::string settingsOfPlacement(const CuePlacement& placement);

}  // namespace qz
