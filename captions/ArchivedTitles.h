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

/// The annotated strings of an archive.
struct ArchivedTitles {
    std::vector<Ref<QzAnnoString>> strings;
    /// Names of annotations missing from the palette, each once; empty without a palette.
    std::vector<std::string> unknownNames;
    /// The number of annotations that could not be read, because their key or positions have an unknown version or are
    /// empty. They are lost.
    uint64_t lostCount = 0;
};

/// Reads an archive that holds one annotated string or an array of them, of the present or the older form. Uses the
/// palette's keys and, for names missing from it, those of `others` or, if that is null, the global key; without a
/// palette each name gets its own key. Returns no value, with the reason in `reason`, if the archive cannot be read or
/// holds anything else.
std::optional<ArchivedTitles> archivedTitles(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                             std::string* reason, LooseKeys* others = nullptr);

/// Passes on the strings of such an archive as titles without times. Names missing from the palette are problems, but
/// are kept if `names` has a place for them.
std::optional<CaptionFile> readArchive(const NSData& file, const CueNames& names, const CueSink& sink,
                                       CaptionProblem* error = nullptr);
/// Writes the cues' texts: one annotated string, or an array of them.
std::optional<WrittenCaptions> writeArchive(const CaptionFile& captions, const CaptionStage& stage,
                                            std::string& reason);
/// Whether the bytes begin like an archive.
bool beginsAsArchive(std::string_view bytes);

/// "2 annotations cannot be read and are lost"
std::string lostAnnotations(uint64_t count);

}  // namespace qz
