#pragma once

#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Reads a SubRip file, in UTF-8 or in UTF-16 with a byte-order mark, with its marked-up text as annotations of the
/// palette (see SubRipText.h and CueAnnotator.h).
///
/// As tolerant as players: the number above the times may be missing, wrong or the last line of a text without a blank
/// line; hours or the fraction of a second may be missing and the comma a point; a text goes on behind blank lines
/// until the next times. Whatever is not in the usual form is reported. A cue whose times cannot be read is left out;
/// one that ends before it starts is kept without a length. The lines of a cue are separated by line feeds.
///
/// Empty, with the reason in `error` and no cue handed over, for a file in another encoding.
std::optional<CaptionFile> readSubRip(const NSData& file, const CueNames& names, const CueSink& sink,
                                      CaptionProblem* error = nullptr);

/// Whether the bytes seem to be such a file.
bool beginsAsSubRip(std::string_view bytes);

}  // namespace qz
