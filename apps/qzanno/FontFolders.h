#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// The machine's fonts and those in the folders; an empty pointer, which stands for the machine's alone, without
/// folders. Warns of files that are no fonts. None, with errors reported, when a folder cannot be read, and with
/// `isStrict` when anything is wrong.
std::optional<std::shared_ptr<FontLibrary>> fontsWithFolders(const std::vector<std::string>& folders, bool isStrict,
                                                             Diagnostics& diagnostics);

}  // namespace qz::tool
