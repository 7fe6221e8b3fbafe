#include "apps/qzanno-composer/TitleFile.h"

#include "QzAnno_AnnotatedTextFramework/archive/PaletteData.h"
#include "QzAnno_AnnotatedTextFramework/archive/QzTokeningArchiver.h"
#include "captions/ArchivedTitles.h"
#include "captions/PlainText.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/NSArray.h"

namespace qz::composer {
namespace {

std::string placed(const std::string& path, const CaptionProblem& problem) {
    return path + ":" + std::to_string(problem.line) + ": " + problem.message;
}

}  // namespace

std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error) {
    const bool isText = path.ends_with(".txt");
    const bool isArchive = path.ends_with(".annostring");
    const bool isSubRip = path.ends_with(".srt");
    if (!isText && !isArchive && !isSubRip && !path.ends_with(".vtt")) {
        error =
            path + ": is no .vtt, .srt, .txt or .annostring file; give captions, one title as text, or archived titles";
        return {};
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        error = path + ": " + reason;
        return {};
    }
    if (isArchive) {
        auto titles = titlesOfArchive(file, palette, reason);
        if (!titles) error = path + ": " + reason;
        if (titles) {
            for (std::string& warning : titles->warnings) warning = path + ": " + warning;
        }
        return titles;
    }
    CaptionProblem problem;
    TitleFile titles;
    if (isText) {
        const auto text = readPlainText(*file, &problem);
        if (text) titles.titles.push_back({*text, {}, {}});
    } else if (const auto captions =
                   isSubRip ? readSubRip(*file, *palette, &problem) : readWebVTT(*file, *palette, &problem)) {
        for (const CaptionCue& cue : captions->cues) titles.titles.push_back({cue.text, cue.start, cue.end});
        for (const CaptionProblem& each : captions->problems) titles.warnings.push_back(placed(path, each));
        if (captions->cues.empty()) problem.message = "holds no captions";
    }
    if (!titles.titles.empty()) return titles;
    error = placed(path, problem);
    return {};
}

Ref<NSData> archiveOfTitles(const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette, std::string& reason) {
    std::vector<Ref<NSObject>> strings;
    for (const Title& title : titles) strings.push_back(title.text);
    const Ref<NSObject> root = strings.size() == 1 ? strings.front() : NSArray::arrayWithObjects(strings);
    return QzTokeningArchiver::archivedDataWithRootObject(root, {palette}, &reason);
}

std::optional<TitleFile> titlesOfArchive(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                         std::string& reason) {
    const auto read = archivedTitles(archive, palette, &reason);
    if (!read) return {};
    TitleFile titles;
    for (const Ref<QzAnnoString>& string : read->strings) titles.titles.push_back({string, {}, {}});
    for (const std::string& name : read->unknownNames) {
        titles.warnings.push_back("the palette has no annotation \"" + name +
                                  "\"; its text keeps the look of the rest");
    }
    if (!titles.titles.empty()) return titles;
    reason = "holds no annotated string";
    return {};
}

bool writeTitleFile(const std::string& path, const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette,
                    std::string& error) {
    std::string reason;
    const Ref<NSData> data = archiveOfTitles(titles, palette, reason);
    if (data && writeFileAtomically(path, data->bytes(), &reason)) return true;
    error = path + ": " + reason;
    return false;
}

Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    const Ref<QzAnnoPalette> palette = file ? paletteFromData(file, &reason) : nullptr;
    if (!palette) error = path + ": " + reason;
    return palette;
}

}  // namespace qz::composer
