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
    /// Seconds from the beginning of the programme; the end is not before the start.
    double start = 0;
    double end = 0;
    /// The line above the time line, or empty.
    std::string identifier;
    /// The unparsed text after the times: "line:0 align:start".
    std::string settings;
    CuePlacement placement;
    Ref<QzMutableAnnoString> text;
    /// The text with its markup, verbatim; empty for formats that are never written.
    std::string payload;
    /// The verbatim text between the previous cue and this one: blocks of lines separated by empty lines. Comments,
    /// style sheets, regions, unreadable cues.
    std::string preamble;
    /// The number of the time line, from 1.
    uint32_t line = 0;
    /// The number of cues left out before this one, since they have nothing to show. They count in numbering.
    uint32_t leftOutBefore = 0;
    /// False in formats without times; start and end are then meaningless.
    bool hasTimes = true;
};

/// The contents of a file of titles in any format.
struct CaptionFile {
    /// In file order; empty if they went to a sink.
    std::vector<CaptionCue> cues;
    std::vector<CaptionProblem> problems;
    /// The looks defined by the file, if the whole file is read with a place for them (see CueNames.h).
    std::vector<std::shared_ptr<const CaptionLook>> looks;
    /// The lines before the first empty one, in formats with a header.
    std::string header;
    /// Like a preamble, after the last cue.
    std::string trailer;
};

/// Receives the cues of a file one by one, in order, so that they need not all be in memory.
using CueSink = std::function<void(CaptionCue&&)>;

/// Passes the cues of a file in one format to the sink and returns its other contents. Returns no value, with the
/// reason in `error` and without passing any cue, if the file is not in that format.
using CaptionReader = std::optional<CaptionFile> (*)(const NSData& file, const CueNames& names, const CueSink& sink,
                                                     CaptionProblem* error);

/// Reads the whole file, including its cues.
std::optional<CaptionFile> wholeCaptionFile(CaptionReader reader, const NSData& file, const CueNames& names,
                                            CaptionProblem* error = nullptr);

}  // namespace qz
