#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "apps/qzanno/Manifest.h"
#include "apps/qzanno/OrderedJobs.h"
#include "apps/qzanno/TitleRenderer.h"

namespace qz::tool {

/// A title on its way to a file.
struct TitleJob final : Job {
    // The request.
    TitleEntry title;
    TitleContent content;
    /// Raw premultiplied RGBA instead of PNG.
    bool isRaw = false;
    bool toStandardOutput = false;
    /// Whether other titles have the same picture, and whether an earlier one draws it.
    bool isShared = false;
    bool isTwin = false;
    /// An earlier run's line for the same title, or empty.
    std::string formerLine;

    // The result.
    /// Whether the earlier run's file is still complete and was kept.
    bool isKept = false;
    PictureEntry picture;
    /// Whether there is a picture; if not, the reason, unless it was --strict.
    bool isDone = false;
    std::string error;
    /// Whether the error concerns the file, not the title.
    bool isFilesError = false;
    /// Only for standard output.
    std::vector<uint8_t> bytes;
};

/// One thread's work function: draws the title and writes its file. The setup must outlive it.
OrderedJobs::Work titleWork(const RenderSetup& setup);

}  // namespace qz::tool
