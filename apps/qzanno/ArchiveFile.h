#pragma once

#include <optional>
#include <string>

#include "apps/qzanno/Diagnostics.h"
#include "captions/ArchivedTitles.h"

namespace qz::tool {

/// Reads a file that holds one annotated string or an array of them, of the present or the older form. The keys are
/// those of the palette; without a palette each name gets a key of its own. None, with an error reported, when the file
/// cannot be read.
std::optional<ArchivedTitles> readArchivedTitles(const std::string& path, const Ref<QzAnnoPalette>& palette,
                                                 Diagnostics& diagnostics);

/// "2 annotations cannot be read and are lost"
std::string lostAnnotations(const ArchivedTitles& titles);

}  // namespace qz::tool
