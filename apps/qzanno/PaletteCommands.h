#pragma once

#include <string>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Prints a palette as a table, the highest priority first and the global annotation last. The exit code.
int showPalette(const std::string& path, Diagnostics& diagnostics);

/// Reports each fault of a palette file. The exit code: 1 when there is one.
int checkPalette(const std::string& path, Diagnostics& diagnostics);

}  // namespace qz::tool
