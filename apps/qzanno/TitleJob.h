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
    // What is asked.
    TitleEntry title;
    TitleContent content;
    /// Raw premultiplied RGBA instead of PNG.
    bool isRaw = false;
    bool toStandardOutput = false;
    /// Whether other titles have the same picture, and whether one before this one draws it.
    bool isShared = false;
    bool isTwin = false;
    /// What an earlier run says of the very same title; empty when none does.
    std::string formerLine;

    // What became of it.
    /// Whether the earlier run's file is still whole and was left as it is.
    bool isKept = false;
    PictureEntry picture;
    /// Whether there is a picture, and if not, why, unless strictness forbade it.
    bool isDone = false;
    std::string error;
    /// Whether the error is the file's and not the title's.
    bool isFilesError = false;
    /// For standard output alone.
    std::vector<uint8_t> bytes;
};

/// What one thread does with jobs: draws the title and writes its file. The setup outlives it.
OrderedJobs::Work titleWork(const RenderSetup& setup);

}  // namespace qz::tool
