#include "captions/CaptionFile.h"

namespace qz {

std::optional<CaptionFile> wholeCaptionFile(CueReader reader, const NSData& file, const CueNames& names,
                                            CaptionProblem* error) {
    CaptionFile captions;
    auto problems = reader(
        file, names, [&](CaptionCue&& cue) { captions.cues.push_back(std::move(cue)); }, error);
    if (!problems) return {};
    captions.problems = std::move(*problems);
    return captions;
}

}  // namespace qz
