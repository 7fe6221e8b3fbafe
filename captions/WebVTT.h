#pragma once

#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Reads a WebVTT file in UTF-8, with its marked-up text as annotations of the palette (see CueAnnotator.h).
///
/// Bytes that are not UTF-8 are read as U+FFFD and reported, once. A cue whose time line is broken is reported and left
/// out. The lines of a cue are separated by line feeds. Problems come in the order in which they are found, which is
/// nearly that of the file.
///
/// Empty, with the reason in `error` and no cue handed over, for a file that is in another encoding or does not begin
/// as WebVTT does.
std::optional<CaptionFile> readWebVTT(const NSData& file, const CueNames& names, const CueSink& sink,
                                      CaptionProblem* error = nullptr);

/// Whether the bytes begin as WebVTT does.
bool beginsAsWebVTT(std::string_view bytes);

}  // namespace qz
