#include "captions/Ass.h"

#include <utility>

#include "captions/AssScript.h"
#include "captions/AssText.h"
#include "captions/CueAnnotator.h"

namespace qz {

std::optional<std::vector<CaptionProblem>> readAss(const NSData& file, const CueNames& names, const CueSink& sink,
                                                   CaptionProblem* error) {
    CaptionProblems problems;
    const std::optional<AssScript> script = parseAssScript(file, problems, error);
    if (!script) return {};
    AssTextReader textReader(*script, problems);
    CueAnnotator annotator(names, problems);
    uint32_t leftOut = 0;
    for (const AssEvent& event : script->events) {
        AssText read = textReader.read(event);
        if (read.isDrawing) {
            ++leftOut;
            continue;
        }
        CaptionCue cue;
        cue.leftOutBefore = std::exchange(leftOut, 0);
        cue.start = event.start;
        cue.end = event.end;
        cue.placement = read.placement;
        cue.text = annotator.annotated(read.text);
        cue.line = event.line;
        sink(std::move(cue));
    }
    return problems.take();
}

std::optional<CaptionFile> readAss(const NSData& file, const CueNames& names, CaptionProblem* error) {
    return wholeCaptionFile(readAss, file, names, error);
}

}  // namespace qz
