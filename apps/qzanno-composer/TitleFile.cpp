#include "apps/qzanno-composer/TitleFile.h"

#include "QzAnno_AnnotatedTextFramework/archive/QzAnnoArchiver.h"
#include "QzAnno_AnnotatedTextFramework/archive/QzTokeningArchiver.h"
#include "captions/PlainText.h"
#include "captions/WebVTT.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/NSArray.h"

namespace qz::composer {
namespace {

std::string placed(const std::string& path, const CaptionProblem& problem) {
    return path + ":" + std::to_string(problem.line) + ": " + problem.message;
}

std::optional<TitleFile> titlesOfArchive(const std::string& path, const Ref<NSData>& file,
                                         const Ref<QzAnnoPalette>& palette, std::string& error) {
    const auto unarchiver = QzTokeningUnarchiver::initForReadingWithData(file, {palette});
    Ref<NSObject> object = unarchiver->decodeObject();
    std::string reason = unarchiver->error();
    // In the older form keys are plain names.
    if (unarchiver->versionForClassName("QzAnnoKey") == 0) {
        reason.clear();
        object = QzAnnoUnarchiver::unarchiveObjectWithData(file, palette, &reason);
    }
    const auto array = std::dynamic_pointer_cast<NSArray>(object);
    TitleFile titles;
    for (const Ref<NSObject>& element : array ? array->elements() : std::vector<Ref<NSObject>>{object}) {
        const auto string = std::dynamic_pointer_cast<QzAnnoString>(element);
        if (string) titles.titles.push_back({string, {}, {}});
        if (!string && reason.empty()) reason = "holds something that is no annotated string; nothing of it is read";
    }
    if (reason.empty() && titles.titles.empty()) reason = "holds no annotated string";
    if (reason.empty()) return titles;
    error = path + ": " + reason;
    return {};
}

}  // namespace

std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error) {
    const bool isText = path.ends_with(".txt");
    const bool isArchive = path.ends_with(".annostring");
    if (!isText && !isArchive && !path.ends_with(".vtt")) {
        error = path + ": is no .vtt, .txt or .annostring file; give captions, one title as text, or archived titles";
        return {};
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        error = path + ": " + reason;
        return {};
    }
    if (isArchive) return titlesOfArchive(path, file, palette, error);
    CaptionProblem problem;
    TitleFile titles;
    if (isText) {
        const auto text = readPlainText(*file, &problem);
        if (text) titles.titles.push_back({*text, {}, {}});
    } else if (const auto captions = readWebVTT(*file, *palette, &problem)) {
        for (const CaptionCue& cue : captions->cues) titles.titles.push_back({cue.text, cue.start, cue.end});
        for (const CaptionProblem& each : captions->problems) titles.warnings.push_back(placed(path, each));
        if (captions->cues.empty()) problem.message = "holds no captions";
    }
    if (!titles.titles.empty()) return titles;
    error = placed(path, problem);
    return {};
}

bool writeTitleFile(const std::string& path, const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette,
                    std::string& error) {
    std::vector<Ref<NSObject>> strings;
    for (const Title& title : titles) strings.push_back(title.text);
    const Ref<NSObject> root = strings.size() == 1 ? strings.front() : NSArray::arrayWithObjects(strings);
    std::string reason;
    const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(root, {palette}, &reason);
    if (data && writeFileAtomically(path, data->bytes(), &reason)) return true;
    error = path + ": " + reason;
    return false;
}

Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    const Ref<QzAnnoPalette> palette = file ? QzAnnoPalette::paletteFromPListData(*file, &reason) : nullptr;
    if (!palette) error = path + ": " + reason;
    return palette;
}

}  // namespace qz::composer
