#include "apps/qzanno-composer/TitleFile.h"

#include "captions/PlainText.h"
#include "captions/WebVTT.h"
#include "platform/foundation/Files.h"

namespace qz::composer {
namespace {

std::string placed(const std::string& path, const CaptionProblem& problem) {
    return path + ":" + std::to_string(problem.line) + ": " + problem.message;
}

}  // namespace

std::optional<TitleFile> readTitleFile(const std::string& path, const QzAnnoPalette& palette, std::string& error) {
    const bool isText = path.ends_with(".txt");
    if (!isText && !path.ends_with(".vtt")) {
        error = path + ": is neither a .vtt nor a .txt file; give captions as WebVTT or one title as text";
        return {};
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        error = path + ": " + reason;
        return {};
    }
    CaptionProblem problem;
    TitleFile titles;
    if (isText) {
        const auto text = readPlainText(*file, &problem);
        if (text) titles.titles.push_back({*text, {}, {}});
    } else if (const auto captions = readWebVTT(*file, palette, &problem)) {
        for (const CaptionCue& cue : captions->cues) titles.titles.push_back({cue.text, cue.start, cue.end});
        for (const CaptionProblem& each : captions->problems) titles.warnings.push_back(placed(path, each));
        if (captions->cues.empty()) problem.message = "holds no captions";
    }
    if (!titles.titles.empty()) return titles;
    error = placed(path, problem);
    return {};
}

Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    const Ref<QzAnnoPalette> palette = file ? QzAnnoPalette::paletteFromPListData(*file, &reason) : nullptr;
    if (!palette) error = path + ": " + reason;
    return palette;
}

}  // namespace qz::composer
