#pragma once

#include <optional>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionFile.h"

namespace qz {

/// Reads the dialogue of a SubStation Alpha script (see AssScript.h), with styles, speakers and overrides as
/// annotations of the palette (see AssText.h and CueAnnotator.h). A style is a class; the style "Default" adds nothing.
/// Lines that hold only a drawing are left out.
///
/// Returns no value, with the reason in `error` and without passing any cue, if the file is not such a script.
std::optional<CaptionFile> readAss(const NSData& file, const CueNames& names, const CueSink& sink,
                                   CaptionProblem* error = nullptr);

/// Whether the bytes seem to be such a script.
bool beginsAsAss(std::string_view bytes);

}  // namespace qz
