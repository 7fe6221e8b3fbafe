#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionProblem.h"
#include "captions/CueNames.h"
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
    /// The text marked up, as it stands; empty of formats that nothing writes.
    std::string payload;
    /// What stands above the cue and below the one before and is none itself, as it stands: blocks of lines with an
    /// empty line between two. Comments, style sheets, regions, cues too broken to be read.
    std::string preamble;
    /// The line of the time line, from 1.
    uint32_t line = 0;
    /// How many cues behind the one before are left out, since they hold nothing that titles show. They count when
    /// cues are numbered.
    uint32_t leftOutBefore = 0;
};

struct CaptionFile {
    /// In the order of the file.
    std::vector<CaptionCue> cues;
    std::vector<CaptionProblem> problems;
    /// The lines before the first empty one, of formats that have such a head.
    std::string header;
    /// As a preamble, behind the last cue.
    std::string trailer;
};

/// Receives the cues of a file one by one, in its order, so that nobody need hold them all.
using CueSink = std::function<void(CaptionCue&&)>;

/// Hands over the cues of a file of one format and returns its problems; none, with the reason, for a file that is not
/// of that format.
using CueReader = std::optional<std::vector<CaptionProblem>> (*)(const NSData& file, const CueNames& names,
                                                                 const CueSink& sink, CaptionProblem* error);

/// The whole file at once.
std::optional<CaptionFile> wholeCaptionFile(CueReader reader, const NSData& file, const CueNames& names,
                                            CaptionProblem* error);

}  // namespace qz
