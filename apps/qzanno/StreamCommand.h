#pragma once

#include <optional>
#include <string>

#include "apps/qzanno/Diagnostics.h"
#include "apps/qzanno/FrameRate.h"
#include "apps/qzanno/RenderCommand.h"

namespace qz::tool {

/// The options of `qzanno stream`.
struct StreamOptions {
    std::string input;
    DrawingOptions drawing;
    FrameRate rate;
    /// Straight alpha instead of premultiplied.
    bool isStraight = true;
    /// The film time of the first frame, in seconds.
    double start = 0;
    /// The length in seconds, or the end in film time; without either or a film, the end of the last caption.
    ///@{
    std::optional<double> duration;
    std::optional<double> end;
    ///@}
    /// The film whose end is the end of the frames; empty if there is none.
    std::string film;
    /// Seconds to add to the captions' times.
    double offset = 0;
    /// Write only frames where a caption appears or disappears, each after a line that identifies it; see
    /// docs/batch.md.
    bool onlyChanges = false;
};

/// Writes captions as frames to standard output. Returns the exit code: 0, or 1 if something failed.
int stream(const StreamOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
