#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/LooseKeys.h"

namespace qz {

/// Annotated strings that an archive holds.
struct ArchivedTitles {
    std::vector<Ref<QzAnnoString>> strings;
    /// Names of annotations that the palette lacks, each once; without a palette, none.
    std::vector<std::string> unknownNames;
    /// How many annotations could not be read, since their key or their positions are of an unknown version or say
    /// nothing. What stands on them is lost.
    uint64_t lostCount = 0;
};

/// Reads an archive that holds one annotated string or an array of them, of the present or the older form. The keys are
/// those of the palette, and for names that it lacks those that `others` gives, or, without it, the global one; without
/// a palette each name gets a key of its own. None, with the reason in `reason`, when the
/// archive cannot be read or holds anything else.
std::optional<ArchivedTitles> archivedTitles(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                             std::string* reason, LooseKeys* others = nullptr);

}  // namespace qz
