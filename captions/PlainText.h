#pragma once

#include <optional>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Hands over the one title of a text file in UTF-8, without annotations and times. The line end that closes the file
/// is dropped, the others become line feeds. Empty, with the reason in `error`, for a file in another encoding.
std::optional<CaptionFile> readPlainText(const NSData& file, const CueNames& names, const CueSink& sink,
                                         CaptionProblem* error = nullptr);

}  // namespace qz
