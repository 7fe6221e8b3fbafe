#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// The system's fonts and those in the folders, if any. Warns about files that are not fonts. Returns null, with errors
/// reported, if a folder cannot be read and, with `isStrict`, if there is any problem.
std::shared_ptr<FontLibrary> fontsWithFolders(const std::vector<std::string>& folders, bool isStrict,
                                              Diagnostics& diagnostics);

}  // namespace qz::tool
