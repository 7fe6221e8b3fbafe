#pragma once

#include <cstdint>
#include <functional>
#include <memory>
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
    /// False for titles of formats without times; start and end then mean nothing.
    bool hasTimes = true;
};

/// What a file of titles holds, whatever its format.
struct CaptionFile {
    /// In the order of the file; empty when they went to a sink.
    std::vector<CaptionCue> cues;
    std::vector<CaptionProblem> problems;
    /// Those that the file itself defines, when the whole file is read with a place for them (see CueNames.h).
    std::vector<std::shared_ptr<const CaptionLook>> looks;
    /// The lines before the first empty one, of formats that have such a head.
    std::string header;
    /// As a preamble, behind the last cue.
    std::string trailer;
};

/// Receives the cues of a file one by one, in its order, so that nobody need hold them all.
using CueSink = std::function<void(CaptionCue&&)>;

/// Hands the cues of a file of one format to the sink and returns what else it holds. Empty, with the reason in `error`
/// and no cue handed over, for a file that is not of that format.
using CaptionReader = std::optional<CaptionFile> (*)(const NSData& file, const CueNames& names, const CueSink& sink,
                                                     CaptionProblem* error);

/// The whole file at once.
std::optional<CaptionFile> wholeCaptionFile(CaptionReader reader, const NSData& file, const CueNames& names,
                                            CaptionProblem* error = nullptr);

}  // namespace qz
