#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"

namespace qz {

struct CaptionCue {
    /// Seconds from the begin of the programme; the end is not before the start.
    double start = 0;
    double end = 0;
    /// The line above the time line; empty without one.
    std::string identifier;
    /// What stands behind the times, as it stands: "line:0 align:start".
    std::string settings;
    CuePlacement placement;
    Ref<QzMutableAnnoString> text;
    /// The line of the time line, from 1.
    uint32_t line = 0;
};

struct CaptionFile {
    /// In the order of the file.
    std::vector<CaptionCue> cues;
    std::vector<CaptionProblem> problems;
};

/// Receives the cues of a file one by one, in its order, so that nobody need hold them all.
using CueSink = std::function<void(CaptionCue&&)>;

}  // namespace qz
