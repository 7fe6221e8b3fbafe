#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace qz::tool {

/// The ending of a file's name with its point, in lower case: ".png" of "titles/A.PNG". Empty if the name has none.
std::string endingOf(const std::string& path);

enum class WithoutEnding { allowed, refused };

/// Makes it wrong usage to give the option a file with any other ending than these. "-" is left to the command.
void allowEndings(CLI::Option& option, std::vector<std::string> endings, WithoutEnding without);

/// The same for pictures or the folder that takes them: a name with an ending as files have it is no folder's, unless
/// the folder is there or the name is written with "/" at its end.
void allowPictures(CLI::Option& option);

}  // namespace qz::tool
