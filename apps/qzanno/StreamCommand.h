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
    /// Seconds of the film at which the first frame is due.
    double start = 0;
    /// Seconds from there on, or of the film; with neither and no film the end of the last caption.
    ///@{
    std::optional<double> duration;
    std::optional<double> end;
    ///@}
    /// The film that is written up to the end of; empty for none.
    std::string film;
    /// Seconds to add to the captions' times.
    double offset = 0;
    /// Only frames at which a caption comes or goes, each behind a line that says which it is; see docs/batch.md.
    bool onlyChanges = false;
};

/// Writes captions as frames to standard output. The exit code: 0, or 1 when something failed.
int stream(const StreamOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
