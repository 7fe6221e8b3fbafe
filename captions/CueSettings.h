#pragma once

#include <cstdint>
#include <string_view>

#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"

namespace qz {

/// Reads what stands behind the times of a WebVTT cue, "line:0 align:start" (W3C WebVTT, "parse the WebVTT cue
/// settings"). A setting that is not in the format's form adds nothing and is reported; so are `vertical` and
/// `region`, which nothing here can show; of a setting that is given twice the last counts.
CuePlacement parseCueSettings(std::string_view settings, uint32_t line, CaptionProblems& problems);

}  // namespace qz
