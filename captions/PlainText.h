#pragma once

#include <optional>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Passes on a UTF-8 text file as one title without annotations and times. The final line end is dropped, the others
/// become line feeds. Returns no value, with the reason in `error`, if the file has another encoding.
std::optional<CaptionFile> readPlainText(const NSData& file, const CueNames& names, const CueSink& sink,
                                         CaptionProblem* error = nullptr);

}  // namespace qz
