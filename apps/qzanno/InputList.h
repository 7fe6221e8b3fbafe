#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A file of titles to render.
struct TitleInput {
    /// As it was given, or as it was found in a folder that was given. Empty for a text of the command line.
    std::string path;
    /// Among the run's, the folder that holds its pictures, below that of the output: the file's path below the folder
    /// that was given, without its ending. Empty for the only file that was given.
    std::string folder;

    /// What is the same wherever a run's files lie, and different for each of them.
    std::string identity() const;
};

/// Files as they are given, and of folders, with those below, every file whose ending tells that it holds titles, in
/// the order of their names. Of two files that would share a folder, the later gets one with its ending, or with a
/// number. None, with an error reported, for a folder that cannot be read or holds no such file.
std::optional<std::vector<TitleInput>> listInputs(const std::vector<std::string>& given, Diagnostics& diagnostics);

}  // namespace qz::tool
