#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qz::tool {

/// Seconds of "90", "90.5", "1:30" or "0:01:30.500"; empty for anything else and for more than 31 years.
std::optional<double> parsedTime(std::string_view text);

/// How many seconds the pictures of a film last, as ffprobe tells it; empty, with the reason, when it cannot.
std::optional<double> lengthOfFilm(const std::string& path, std::string& reason);

}  // namespace qz::tool
