#include "apps/qzanno/TitleReader.h"

#include <algorithm>
#include <iterator>

#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno/ArchiveFile.h"
#include "apps/qzanno/FileEndings.h"
#include "captions/Ass.h"
#include "captions/PlainText.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"

namespace qz::tool {
namespace {

enum class Kind { unknown, subRip, webVTT, ass, text, archive };

Kind kindOf(const std::string& path) {
    static constexpr std::pair<std::string_view, Kind> kinds[] = {
        {".srt", Kind::subRip}, {".vtt", Kind::webVTT}, {".ass", Kind::ass},
        {".ssa", Kind::ass},    {".txt", Kind::text},   {".annostring", Kind::archive}};
    const auto* const found = std::ranges::find(kinds, endingOf(path), &std::pair<std::string_view, Kind>::first);
    return found == std::end(kinds) ? Kind::unknown : found->second;
}

void report(const CaptionProblem& problem, const std::string& path, Diagnostics& diagnostics) {
    const std::string place = placeInFile(path, problem.line);
    // A voice without a style of its own is no mistake in the file.
    if (problem.kind == CaptionProblem::unknownName)
        diagnostics.note(place, problem.message);
    else
        diagnostics.warning(place, problem.message);
}

bool readArchive(const std::string& path, const Ref<QzAnnoPalette>& palette, Diagnostics& diagnostics,
                 const TitleSink& sink, bool& hasLosses) {
    const auto archived = readArchivedTitles(path, palette, diagnostics);
    if (!archived) return false;
    for (const std::string& name : archived->unknownNames) {
        hasLosses = true;
        diagnostics.warning(path, "there is no annotation " + tool::quoted(name) + " in the palette; it shows nothing");
    }
    if (archived->lostCount > 0) {
        hasLosses = true;
        diagnostics.warning(path, lostAnnotations(*archived) + "; 'qzanno archive dump' shows what they are");
    }
    uint32_t index = 0;
    for (const Ref<QzAnnoString>& string : archived->strings) sink({++index, {}, {}, {}, string->mutableCopy()});
    return true;
}

}  // namespace

bool holdsTitles(const std::string& path) {
    return kindOf(path) != Kind::unknown;
}

Title titleOfText(const std::string& text) {
    return {1, {}, {}, {}, QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text))};
}

bool readTitles(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const TitleSink& sink,
                bool& hasLosses) {
    const Kind kind = kindOf(path);
    if (kind == Kind::archive) return readArchive(path, looks.palette(), diagnostics, sink, hasLosses);
    if (kind == Kind::unknown) {
        diagnostics.error(
            path, "is no " + std::string(kTitleEndings) +
                      " file; give captions as SubRip, WebVTT or SubStation Alpha, one title as text, or an archive of "
                      "titles");
        return false;
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        diagnostics.error(path, reason);
        return false;
    }
    CaptionProblem error;
    if (kind == Kind::text) {
        const auto text = readPlainText(*file, &error);
        if (text)
            sink({1, {}, {}, {}, *text});
        else
            diagnostics.error(path, error.message);
        return text.has_value();
    }
    uint32_t index = 0;
    const CueSink cues = [&](CaptionCue&& cue) {
        index += cue.leftOutBefore + 1;
        sink({index, cue.start, cue.end, cue.placement, std::move(cue.text)});
    };
    const auto problems = kind == Kind::subRip ? readSubRip(*file, looks, cues, &error)
                          : kind == Kind::ass  ? readAss(*file, looks, cues, &error)
                                               : readWebVTT(*file, looks, cues, &error);
    if (!problems) {
        diagnostics.error(placeInFile(path, error.line), error.message);
        return false;
    }
    for (const CaptionProblem& problem : *problems) {
        report(problem, path, diagnostics);
        hasLosses |= problem.isLoss();
    }
    return true;
}

}  // namespace qz::tool
