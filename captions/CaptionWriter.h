#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "captions/CaptionFile.h"
#include "captions/CaptionLooks.h"

namespace qz {

struct WrittenCaptions {
    std::string file;
    /// Contents of the cues that the file cannot hold, one line each.
    std::vector<std::string> losses;
    /// The palette's fonts that are not installed; the file names the system font instead.
    std::vector<std::string> missingFonts = {};
};

/// The context for writing captions.
struct CaptionStage {
    /// The palette, which is not changed, with the looks of files, and the screen in points.
    const CaptionLooks& looks;
    /// The direction of every text, unless it is natural.
    NSWritingDirection direction = NSWritingDirection::natural;
};

/// Writes the cues of a file. Returns no value, with one line in `reason`, if the format cannot hold them.
using CaptionWriter = std::optional<WrittenCaptions> (*)(const CaptionFile& captions, const CaptionStage& stage,
                                                         std::string& reason);

}  // namespace qz
