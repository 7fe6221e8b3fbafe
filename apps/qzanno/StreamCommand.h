#pragma once

#include <optional>
#include <string>

#include "apps/qzanno/Diagnostics.h"
#include "apps/qzanno/FrameRate.h"
#include "apps/qzanno/RenderCommand.h"

namespace qz::tool {

/// What `qzanno stream` was asked for.
struct StreamOptions {
    std::string input;
    DrawingOptions drawing;
    FrameRate rate;
    /// Straight alpha instead of premultiplied.
    bool isStraight = true;
    /// Seconds; none for up to the end of the last caption.
    std::optional<double> duration;
    /// Only frames at which a caption comes or goes, each behind a line that says which it is; see docs/batch.md.
    bool onlyChanges = false;
};

/// Writes captions as frames to standard output. The exit code: 0, or 1 when something failed.
int stream(const StreamOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
