#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Annotated strings that an archive holds.
struct ArchivedTitles {
    std::vector<Ref<QzAnnoString>> strings;
    /// Names of annotations that the palette lacks, each once; without a palette, none.
    std::vector<std::string> unknownNames;
};

/// Reads a file that holds one annotated string or an array of them, of the present or the older form. The keys are
/// those of the palette; without a palette each name gets a key of its own. None, with an error reported, when the file
/// cannot be read.
std::optional<ArchivedTitles> readArchivedTitles(const std::string& path, const Ref<QzAnnoPalette>& palette,
                                                 Diagnostics& diagnostics);

/// Whether the bytes begin as those of an archive do.
bool isArchive(const NSData& file);

}  // namespace qz::tool
