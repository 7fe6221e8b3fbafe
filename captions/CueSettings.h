#pragma once

#include <cstdint>
#include <string_view>

#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"

namespace qz {

/// Reads the settings after the times of a WebVTT cue, "line:0 align:start" (W3C WebVTT, "parse the WebVTT cue
/// settings"). Malformed settings are ignored and reported, and so are `vertical` and `region`, which are not
/// supported; if a setting is repeated, the last one counts.
CuePlacement parseCueSettings(std::string_view settings, uint32_t line, CaptionProblems& problems);

}  // namespace qz
