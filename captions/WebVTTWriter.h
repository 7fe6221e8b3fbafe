#pragma once

#include <optional>
#include <string>

#include "captions/CaptionFile.h"
#include "captions/CaptionWriter.h"

namespace qz {

/// Writes captions as a WebVTT file that is read back as the same cues but for the losses: texts, annotations, times to
/// the millisecond, identifiers and settings; and with them header, preambles and trailer to the letter (see
/// CueTextWriter.h). Cues without settings get those that say their placement; a `header` that does not begin as WebVTT
/// does is left out. The file is in UTF-8, with line feeds; losses are in the order of the cues: "title 5: <lang he> is
/// gone".
///
/// Empty, with one line in `reason` that names the cue, counted from 1, when a cue has no such form.
std::optional<WrittenCaptions> writeWebVTT(const CaptionFile& captions, const CaptionStage& stage, std::string& reason);

/// The settings that say the placement, "line:0 align:left"; a row is the line nearest to it.
std::string settingsOfPlacement(const CuePlacement& placement);

}  // namespace qz
