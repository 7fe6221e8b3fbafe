#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/CaptionFile.h"
#include "captions/CaptionWriter.h"
#include "captions/LooseKeys.h"

namespace qz {

/// Annotated strings that an archive holds.
struct ArchivedTitles {
    std::vector<Ref<QzAnnoString>> strings;
    /// Names of annotations that the palette lacks, each once; empty without a palette.
    std::vector<std::string> unknownNames;
    /// How many annotations could not be read, since their key or their positions are of an unknown version or say
    /// nothing. What stands on them is lost.
    uint64_t lostCount = 0;
};

/// Reads an archive that holds one annotated string or an array of them, of the present or the older form. The keys are
/// those of the palette, and for names that it lacks those that `others` gives, or, without it, the global one; without
/// a palette each name gets a key of its own. Empty, with the reason in `reason`, when the archive cannot be read or
/// holds anything else.
std::optional<ArchivedTitles> archivedTitles(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                             std::string* reason, LooseKeys* others = nullptr);

/// Hands over the strings of such an archive as titles without times. Names that the palette lacks are problems; they
/// are kept when `names` has a place for them.
std::optional<CaptionFile> readArchive(const NSData& file, const CueNames& names, const CueSink& sink,
                                       CaptionProblem* error = nullptr);
/// Writes the cues' texts: one annotated string, or an array of them.
std::optional<WrittenCaptions> writeArchive(const CaptionFile& captions, const CaptionStage& stage,
                                            std::string& reason);
/// Whether the bytes begin as those of an archive do.
bool beginsAsArchive(std::string_view bytes);

/// "2 annotations cannot be read and are lost"
std::string lostAnnotations(uint64_t count);

}  // namespace qz
