#pragma once

#include <string>
#include <vector>

#include "apps/qzanno/Diagnostics.h"
#include "apps/qzanno/RenderCommand.h"

namespace qz::tool {

/// The options of `qzanno export`.
struct ExportOptions {
    std::string input;
    std::string palette;
    std::string output;
    PixelSize screen = {1920, 1080};
    NSWritingDirection direction = NSWritingDirection::natural;
    Looks looks = Looks::both;
    /// Whether features that the format cannot hold are an error.
    bool strict = false;
};

/// Writes captions with the looks of a palette in the format for the output's ending, and reports what that cannot
/// hold. Returns the exit code.
int exportCaptions(const ExportOptions& options, const std::shared_ptr<FontLibrary>& fonts, Diagnostics& diagnostics);

}  // namespace qz::tool
