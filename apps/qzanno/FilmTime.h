#pragma once

#include <optional>
#include <string>

namespace qz::tool {

/// How many seconds the pictures of a film last, as ffprobe tells it; empty, with the reason, when it cannot.
std::optional<double> lengthOfFilm(const std::string& path, std::string& reason);

}  // namespace qz::tool
