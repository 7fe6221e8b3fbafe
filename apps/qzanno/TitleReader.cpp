#include "apps/qzanno/TitleReader.h"

#include <filesystem>

#include "apps/qzanno/ArchiveFile.h"
#include "captions/PlainText.h"
#include "captions/WebVTT.h"
#include "platform/foundation/Files.h"

namespace qz::tool {
namespace {

std::string endingOf(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending;
}

void report(const CaptionProblem& problem, const std::string& path, Diagnostics& diagnostics) {
    const std::string place = placeInFile(path, problem.line);
    // A voice or <b>, <i>, <u> without a style of its own is no mistake in the file.
    if (problem.kind == CaptionProblem::unknownName)
        diagnostics.note(place, problem.message);
    else
        diagnostics.warning(place, problem.message);
}

std::vector<Title> titlesOfCues(const std::vector<CaptionCue>& cues) {
    std::vector<Title> titles;
    titles.reserve(cues.size());
    for (const CaptionCue& cue : cues) {
        titles.push_back({static_cast<uint32_t>(titles.size() + 1), cue.start, cue.end, cue.text});
    }
    return titles;
}

std::optional<std::vector<Title>> titlesOfArchive(const std::string& path, const Ref<QzAnnoPalette>& palette,
                                                  Diagnostics& diagnostics, bool& hasUnknownName) {
    const auto archived = readArchivedTitles(path, palette, diagnostics);
    if (!archived) return {};
    for (const std::string& name : archived->unknownNames) {
        hasUnknownName = true;
        diagnostics.warning(path, "there is no annotation " + tool::quoted(name) + " in the palette; it shows nothing");
    }
    std::vector<Title> titles;
    for (const Ref<QzAnnoString>& string : archived->strings) {
        titles.push_back({static_cast<uint32_t>(titles.size() + 1), std::nullopt, std::nullopt, string->mutableCopy()});
    }
    return titles;
}

}  // namespace

std::vector<Title> titleOfText(const std::string& text) {
    return {{1, std::nullopt, std::nullopt, QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text))}};
}

std::optional<std::vector<Title>> readTitles(const std::string& path, const Ref<QzAnnoPalette>& palette,
                                             Diagnostics& diagnostics, bool& hasUnknownClass) {
    const std::string ending = endingOf(path);
    if (ending == ".annostring") return titlesOfArchive(path, palette, diagnostics, hasUnknownClass);
    if (ending != ".vtt" && ending != ".txt") {
        diagnostics.error(path,
                          "is no .vtt, .txt or .annostring file; give captions as WebVTT, one title as text, or an "
                          "archive of titles");
        return {};
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        diagnostics.error(path, reason);
        return {};
    }
    CaptionProblem error;
    if (ending == ".txt") {
        const auto text = readPlainText(*file, &error);
        if (text) return {{{1, std::nullopt, std::nullopt, *text}}};
        diagnostics.error(path, error.message);
        return {};
    }
    const auto captions = readWebVTT(*file, *palette, &error);
    if (!captions) {
        diagnostics.error(placeInFile(path, error.line), error.message);
        return {};
    }
    for (const CaptionProblem& problem : captions->problems) {
        report(problem, path, diagnostics);
        hasUnknownClass |= problem.kind == CaptionProblem::unknownClass;
    }
    return titlesOfCues(captions->cues);
}

}  // namespace qz::tool
