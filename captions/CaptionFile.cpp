#include "captions/CaptionFile.h"

namespace qz {

std::optional<CaptionFile> wholeCaptionFile(CaptionReader reader, const NSData& file, const CueNames& names,
                                            CaptionProblem* error) {
    std::vector<CaptionCue> cues;
    auto captions = reader(
        file, names, [&](CaptionCue&& cue) { cues.push_back(std::move(cue)); }, error);
    if (!captions) return {};
    captions->cues = std::move(cues);
    if (names.looks) captions->looks = names.looks->all();
    return captions;
}

}  // namespace qz
