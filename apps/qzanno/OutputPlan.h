#pragma once

#include <optional>
#include <string>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// The paths of pictures.
struct OutputPlan {
    bool toStandardOutput = false;
    /// Raw premultiplied RGBA instead of PNG.
    bool isRaw = false;
    /// The directory for several titles; empty for a single file.
    std::string directory;
    std::string file;

    /// The path of a title's picture, "-" for standard output.
    std::string fileFor(uint32_t index) const;
};

/// Plans from the output as given: "-", a .png or .rgba file, or a directory; if empty, a name derived from the input's
/// in the current directory. Returns no value, with an error reported, if one file would have to hold several titles.
std::optional<OutputPlan> planOutput(const std::string& output, const std::string& input, size_t titleCount,
                                     Diagnostics& diagnostics);

/// The same for one of several inputs: standard output, or its folder in the output, which if empty is the current
/// directory.
std::optional<OutputPlan> planOutputOfFolder(const std::string& output, const std::string& folder,
                                             Diagnostics& diagnostics);

/// Makes a directory with its parents unless it exists.
bool makeDirectory(const std::string& path, Diagnostics& diagnostics);

}  // namespace qz::tool
