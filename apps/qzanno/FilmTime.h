#pragma once

#include <optional>
#include <string>

namespace qz::tool {

/// The length of a film's video in seconds, determined by ffprobe; no value, with the reason, if that fails.
std::optional<double> lengthOfFilm(const std::string& path, std::string& reason);

}  // namespace qz::tool
