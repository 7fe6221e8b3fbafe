#include "captions/Ass.h"

#include "captions/AssScript.h"
#include "captions/AssText.h"
#include "captions/CueAnnotator.h"

namespace qz {

std::optional<std::vector<CaptionProblem>> readAss(const NSData& file, const CueNames& names, const CueSink& sink,
                                                   CaptionProblem* error) {
    const std::optional<AssScript> script = parseAssScript(file, error);
    if (!script) return {};
    std::vector<CaptionProblem> problems = script->problems;
    AssTextReader textReader(*script, problems);
    CueAnnotator annotator(names, problems);
    for (const AssEvent& event : script->events) {
        AssText read = textReader.read(event);
        CaptionCue cue;
        cue.start = event.start;
        cue.end = event.end;
        cue.placement = read.placement;
        cue.text = annotator.annotated(read.text);
        cue.line = event.line;
        sink(std::move(cue));
    }
    return problems;
}

std::optional<CaptionFile> readAss(const NSData& file, const CueNames& names, CaptionProblem* error) {
    return wholeCaptionFile(readAss, file, names, error);
}

}  // namespace qz
