#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace qz::tool {

/// For help: "Captions (.srt, .vtt, .ass, .ssa)".
std::string captionsText();

enum class WithoutEnding { allowed, refused };

/// Makes it wrong usage to give the option a file with any other ending than these. "-" is left to the command.
void allowEndings(CLI::Option& option, std::vector<std::string> endings, WithoutEnding without);

/// The same for pictures or the folder that takes them: a name with an ending as files have it is no folder's, unless
/// the folder is there or the name is written with "/" at its end.
void allowPictures(CLI::Option& option);

}  // namespace qz::tool
