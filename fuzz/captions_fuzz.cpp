// Arbitrary caption files: cues must be in order, texts valid, and every problem one line with its place.
#include <cmath>

#include "captions/AssPalette.h"
#include "captions/Format.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace qz;
using fuzz::require;

Ref<QzAnnoPalette> newPalette() {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    for (const char* name : {"b", "i", "v", "Loud voice", "Ann"})
        palette->createAnno(NSString::stringWithUTF8String(name));
    return palette;
}

void checkProblem(const CaptionProblem& problem) {
    require(!problem.message.empty() && problem.message.find('\n') == std::string::npos, "a problem is one line");
}

void checkCue(const CaptionCue& cue) {
    require(std::isfinite(cue.start) && std::isfinite(cue.end) && 0 <= cue.start && cue.start <= cue.end,
            "a cue's times are in order");
    require(cue.text != nullptr, "a cue has a text");
    uint64_t end = 0;
    for (const QzAnnoString::Run& run : cue.text->runs()) {
        require(run.range.location == end && run.range.length > 0, "runs follow each other");
        end = run.range.end();
    }
    require(end == cue.text->length(), "runs reach the end of the text");
}

void check(const uint8_t* data, size_t size) {
    const Ref<NSData> file = NSData::dataWithBytes(fuzz::textOf(data, size));
    CaptionLooks looks(newPalette(), {1920, 1080}, size % 2 == 0 ? Looks::both : Looks::file);
    // Each reads every input.
    for (const Format& format : formats()) {
        CaptionProblem error;
        const std::optional<CaptionFile> captions = wholeCaptionFile(format.read, *file, looks, &error);
        if (!captions) {
            checkProblem(error);
            continue;
        }
        for (const CaptionProblem& problem : captions->problems) checkProblem(problem);
        for (const CaptionCue& cue : captions->cues) checkCue(cue);
    }
    CaptionProblem error;
    CaptionProblems problems;
    if (const auto script = parseAssScript(*file, problems, &error)) {
        std::vector<std::string> losses;
        require(paletteOfAss(*script, {}, losses)->lookupAnno({}) != nullptr, "styles make a palette");
    }
    formatOfContent(file->view());
}

}  // namespace

QZ_FUZZ(check)
