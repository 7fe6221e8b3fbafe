#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A file of titles to render.
struct TitleInput {
    /// The path as given, or as found in a given folder. Empty for a text on the command line.
    std::string path;
    /// The folder for its pictures, relative to the output folder: the file's path relative to the given folder,
    /// without its ending. Empty for a single given file.
    std::string folder;

    /// Identifies the file in the run, wherever the files are.
    std::string identity() const;
};

/// Lists the given files and, from given folders and their subfolders, every file with an ending for titles, in the
/// order of names. If two files would share a folder, the later one's gets its ending or a number. Returns no value,
/// with an error reported, if a folder cannot be read or has no such file.
std::optional<std::vector<TitleInput>> listInputs(const std::vector<std::string>& given, Diagnostics& diagnostics);

}  // namespace qz::tool
