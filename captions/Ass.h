#pragma once

#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Reads the dialogue of a SubStation Alpha script (see AssScript.h), with styles, speakers and overrides as
/// annotations of the palette (see AssText.h and CueAnnotator.h). A style is a class; the one named "Default" adds
/// nothing. Lines that hold a drawing alone are left out.
///
/// Empty, with the reason in `error` and no cue handed over, for a file that is no such script.
std::optional<CaptionFile> readAss(const NSData& file, const CueNames& names, const CueSink& sink,
                                   CaptionProblem* error = nullptr);

/// Whether the bytes seem to be such a script.
bool beginsAsAss(std::string_view bytes);

}  // namespace qz
