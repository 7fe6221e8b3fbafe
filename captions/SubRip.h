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
/// line; hours or the fraction of a second may be missing and the comma a point; a text continues after blank lines
/// until the next times. All irregularities are reported. A cue whose times cannot be read is left out; one that ends
/// before it starts is kept with no duration. The lines of a cue are separated by line feeds.
///
/// Returns no value, with the reason in `error` and without passing any cue, if the file has another encoding.
std::optional<CaptionFile> readSubRip(const NSData& file, const CueNames& names, const CueSink& sink,
                                      CaptionProblem* error = nullptr);

/// Whether the bytes seem to be such a file.
bool beginsAsSubRip(std::string_view bytes);

}  // namespace qz
