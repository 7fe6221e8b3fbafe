#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "captions/CaptionProblem.h"
#include "platform/foundation/NSData.h"

namespace qz {

struct CaptionCue {
    /// Seconds from the begin of the programme; the end is not before the start.
    double start = 0;
    double end = 0;
    /// The line above the time line; empty without one.
    std::string identifier;
    /// What stands behind the times, as it stands: "line:0 align:start".
    std::string settings;
    Ref<QzMutableAnnoString> text;
    /// The line of the time line, from 1.
    uint32_t line = 0;
};

struct CaptionFile {
    /// In the order of the file.
    std::vector<CaptionCue> cues;
    std::vector<CaptionProblem> problems;
};

/// Reads a WebVTT file in UTF-8, with its marked-up text as annotations of the palette.
///
/// A class is the annotation of exactly that name, or, since classes cannot hold blanks, of the name with a blank for
/// each "_".
/// `<b>`, `<i>`, `<u>` are the annotations "b", "i", "u"; a voice is the annotation with the speaker's name, else "v".
/// What the palette lacks is reported once for the file, where it first stands, and adds nothing; so does the global
/// annotation, which holds anyway. A cue whose time line is broken is reported and left out. The lines of a cue are
/// separated by line feeds.
///
/// None, with the reason in `error`, for a file that is in another encoding or does not begin as WebVTT does.
std::optional<CaptionFile> readWebVTT(const NSData& file, const QzAnnoPalette& palette,
                                      CaptionProblem* error = nullptr);

}  // namespace qz
