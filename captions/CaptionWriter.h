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
    /// What the file will not hold of the cues, one line each.
    std::vector<std::string> losses;
    /// Fonts that the palette names and the machine does not have; the file names the system font in their place.
    std::vector<std::string> missingFonts = {};
};

/// For whom captions are written.
struct CaptionStage {
    /// The palette, which is not changed, the screen in points, and the looks of files that are in the palette.
    const CaptionLooks& looks;
    /// Of every text, unless it is natural.
    NSWritingDirection direction = NSWritingDirection::natural;
};

/// Writes the cues of a file. Empty, with one line in `reason`, when the format cannot say them.
using CaptionWriter = std::optional<WrittenCaptions> (*)(const CaptionFile& captions, const CaptionStage& stage,
                                                         std::string& reason);

}  // namespace qz
