#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace qz::tool {

/// For help: "Captions (.srt, .vtt, .ass, .ssa)".
std::string captionsText();

enum class WithoutEnding { allowed, refused };

/// Makes it a usage error to give the option a file with any other ending. "-" is left to the command.
void allowEndings(CLI::Option& option, std::vector<std::string> endings, WithoutEnding without);

/// The same for pictures or their folder: a name that looks like a file's is not a folder's unless the folder exists or
/// the name ends in "/".
void allowPictures(CLI::Option& option);

}  // namespace qz::tool
