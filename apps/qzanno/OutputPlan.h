#pragma once

#include <optional>
#include <string>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Where pictures go.
struct OutputPlan {
    bool toStandardOutput = false;
    /// Raw premultiplied RGBA instead of PNG.
    bool isRaw = false;
    /// Of many titles; empty for a single file.
    std::string directory;
    std::string file;

    /// The path of a title's picture, "-" for standard output.
    std::string fileFor(uint32_t index) const;
};

/// Decides by the output as the user gave it: "-", a .png or .rgba file, or a directory; when empty, a name made of the
/// input's in the current directory. None, with an error reported, when one file should hold several titles.
std::optional<OutputPlan> planOutput(const std::string& output, const std::string& input, size_t titleCount,
                                     Diagnostics& diagnostics);

/// The same for one of several inputs: standard output, or its folder below the output, which is the current directory
/// when empty.
std::optional<OutputPlan> planOutputOfFolder(const std::string& output, const std::string& folder,
                                             Diagnostics& diagnostics);

/// Makes a directory with its parents, if it is not there yet.
bool makeDirectory(const std::string& path, Diagnostics& diagnostics);

}  // namespace qz::tool
