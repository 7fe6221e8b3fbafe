#pragma once

#include <string>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Prints a palette as a table, the highest priority first and the global annotation last. The exit code.
int showPalette(const std::string& path, Diagnostics& diagnostics);

/// Reports each fault of a palette file. The exit code: 1 when there is one.
int checkPalette(const std::string& path, Diagnostics& diagnostics);

/// Writes a palette file as a property list (.plist) or as an archive (.annopalette), by the ending of the output's
/// name. The exit code.
int convertPalette(const std::string& input, const std::string& output, Diagnostics& diagnostics);

}  // namespace qz::tool
