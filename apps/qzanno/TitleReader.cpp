#include "apps/qzanno/TitleReader.h"

#include "QzAnno/platform/foundation/Files.h"
#include "captions/Format.h"

namespace qz::tool {
namespace {

std::string placeOf(const std::string& path, const CaptionProblem& problem) {
    return problem.line == 0 ? path : placeInFile(path, problem.line);
}

void report(const CaptionProblem& problem, const std::string& path, const Format& format, Diagnostics& diagnostics) {
    const std::string place = placeOf(path, problem);
    // A voice without a style is not a mistake in the file.
    if (problem.kind == CaptionProblem::unknownName)
        diagnostics.note(place, problem.message);
    else if (problem.kind == CaptionProblem::notShown && format.kind == Format::archive)
        diagnostics.warning(place, problem.message + "; 'qzanno archive dump' shows what they are");
    else
        diagnostics.warning(place, problem.message);
}

/// A hint at the likely format of a file with an unknown ending; empty if its content is not recognised either.
std::string formatHint(const std::string& path) {
    const Ref<NSData> file = readFile(path, nullptr);
    const Format* const format = file ? formatOfContent(file->view()) : nullptr;
    if (!format) return {};
    return "; it seems to be " + std::string(format->name) + ", so let its name end in " +
           std::string(format->ending());
}

}  // namespace

Title titleOfText(const std::string& text) {
    return {1, {}, {}, {}, QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text))};
}

bool readCues(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const CueSink& sink,
              bool& hasLosses) {
    const Format* const format = formatOfPath(path);
    if (!format) {
        diagnostics.error(path, "is no " + listOf(endingsOf(Format::any)) +
                                    " file; give captions, one title as text, or an archive of titles" +
                                    formatHint(path));
        return false;
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        diagnostics.error(path, reason);
        return false;
    }
    CaptionProblem error;
    const auto captions = format->read(*file, looks, sink, &error);
    if (!captions) {
        const bool isArchive = format->kind == Format::archive;
        diagnostics.error(placeOf(path, error),
                          error.message + (isArchive ? "; 'qzanno archive dump' shows what it is" : ""));
        return false;
    }
    for (const CaptionProblem& problem : captions->problems) {
        report(problem, path, *format, diagnostics);
        hasLosses |= problem.isLoss();
    }
    return true;
}

bool readTitles(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const TitleSink& sink,
                bool& hasLosses) {
    uint32_t index = 0;
    const CueSink cues = [&](CaptionCue&& cue) {
        index += cue.leftOutBefore + 1;
        Title title{index, {}, {}, cue.placement, std::move(cue.text)};
        if (cue.hasTimes) {
            title.start = cue.start;
            title.end = cue.end;
        }
        sink(std::move(title));
    };
    return readCues(path, looks, diagnostics, cues, hasLosses);
}

}  // namespace qz::tool
