#pragma once

#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Reads a WebVTT file in UTF-8, with its marked-up text as annotations of the palette (see CueAnnotator.h).
///
/// Malformed UTF-8 is read as U+FFFD and reported once. A cue with a malformed time line is reported and left out. The
/// lines of a cue are separated by line feeds. Problems are in the order in which they are found, which is nearly that
/// of the file.
///
/// Returns no value, with the reason in `error` and without passing any cue, if the file has another encoding or does
/// not begin like WebVTT.
std::optional<CaptionFile> readWebVTT(const NSData& file, const CueNames& names, const CueSink& sink,
                                      CaptionProblem* error = nullptr);

/// Whether the bytes begin like WebVTT.
bool beginsAsWebVTT(std::string_view bytes);

}  // namespace qz
