// Arbitrary caption files: cues must be in order, texts valid, and every problem one line with its place.
#include <cmath>

#include "captions/Ass.h"
#include "captions/AssPalette.h"
#include "captions/PlainText.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace qz;
using fuzz::require;

using Reader = std::optional<CaptionFile> (*)(const NSData&, const CueNames&, CaptionProblem*);

/// Each reads every input.
constexpr Reader kReaders[] = {readWebVTT, readSubRip, readAss};

Ref<QzAnnoPalette> newPalette() {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    for (const char* name : {"b", "i", "v", "Loud voice", "Ann"})
        palette->createAnno(NSString::stringWithUTF8String(name));
    return palette;
}

void checkProblem(const CaptionProblem& problem) {
    require(problem.line >= 1, "lines count from 1");
    require(!problem.message.empty() && problem.message.find('\n') == std::string::npos, "a problem is one line");
}

void checkCue(const CaptionCue& cue) {
    require(std::isfinite(cue.start) && std::isfinite(cue.end) && 0 <= cue.start && cue.start <= cue.end,
            "a cue's times are in order");
    require(cue.line >= 1 && cue.text, "a cue has a line and a text");
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
    for (const Reader reader : kReaders) {
        CaptionProblem error;
        const std::optional<CaptionFile> captions = reader(*file, looks, &error);
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
        require(paletteOfAss(*script, losses)->lookupAnno({}) != nullptr, "styles make a palette");
    }
    if (!readPlainText(*file, &error)) checkProblem(error);
}

}  // namespace

QZ_FUZZ(check)
