#include "apps/qzanno-composer/TitleFile.h"

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno-composer/TitleTimes.h"
#include "captions/Format.h"
#include "captions/WebVTTWriter.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz::composer {
namespace {

std::string placed(const std::string& path, const CaptionProblem& problem) {
    return path + (problem.line == 0 ? "" : ":" + std::to_string(problem.line)) + ": " + problem.message;
}

Title titleOf(CaptionCue& cue) {
    Title title = {std::move(cue.text), {}, {}};
    if (!cue.hasTimes) return title;
    title.start = cue.start;
    title.end = cue.end;
    const std::string settings = cue.settings.empty() ? settingsOfPlacement(cue.placement) : cue.settings;
    const CueSource source = {cue.identifier, settings, cue.payload, cue.preamble, cue.placement};
    title.source = std::make_shared<const CueSource>(source);
    return title;
}

CaptionFile captionsOf(const TitleFile& titles) {
    CaptionFile captions;
    captions.header = titles.header;
    captions.trailer = titles.trailer;
    static const CueSource kNone;
    for (const Title& title : titles.titles) {
        const CueSource& source = title.source ? *title.source : kNone;
        CaptionCue cue;
        cue.hasTimes = title.start && title.end;
        cue.start = title.start.value_or(0);
        cue.end = title.end.value_or(0);
        cue.identifier = source.identifier;
        cue.settings = source.settings;
        cue.placement = source.placement;
        cue.text = title.text->mutableCopy();
        cue.payload = source.payload;
        cue.preamble = source.preamble;
        captions.cues.push_back(std::move(cue));
    }
    return captions;
}

}  // namespace

std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error) {
    const Format* const format = formatOfPath(path);
    if (!format) {
        error = path + ": is no " + listOf(endingsOf(Format::any)) +
                " file; give captions, one title as text, or archived titles";
        return {};
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        error = path + ": " + reason;
        return {};
    }
    CaptionProblem problem;
    LooseKeys others;
    CaptionLooks looks(QzAnnoPalette::init(), {1920, 1080});
    auto captions = wholeCaptionFile(format->read, *file, {*palette, others, looks}, &problem);
    if (!captions || captions->cues.empty()) {
        if (captions) problem.message = "holds no " + std::string(format->hasTimes() ? "captions" : "annotated string");
        error = placed(path, problem);
        return {};
    }
    TitleFile titles;
    for (CaptionCue& cue : captions->cues) titles.titles.push_back(titleOf(cue));
    titles.looks = std::move(captions->looks);
    titles.header = std::move(captions->header);
    titles.trailer = std::move(captions->trailer);
    for (const CaptionProblem& each : captions->problems) titles.warnings.push_back(placed(path, each));
    return titles;
}

std::optional<WrittenTitles> titlesAsFile(const std::string& path, TitleFile titles, const Ref<QzAnnoPalette>& palette,
                                          NSSize screen, std::string& error) {
    const Format* const format = formatToWrite(path);
    if (!format) {
        error = path + ": titles are saved as captions or as an archive; let the name end in " +
                listOf(writtenEndingsOf(Format::any));
        return {};
    }
    for (size_t i = 0; format->hasTimes() && i < titles.titles.size(); ++i) {
        if (!titles.titles[i].start || !titles.titles[i].end) giveTimes(titles.titles, i);
    }
    const CaptionFile captions = captionsOf(titles);
    const CaptionLooks looks(palette, screen);
    std::string reason;
    const auto file = format->write(captions, {looks}, reason);
    if (!file) {
        error = path + ": " + reason;
        return {};
    }
    WrittenTitles written{NSData::dataWithBytes(file->file), lossesIn(*format, captions)};
    for (const std::string& font : file->missingFonts) {
        written.losses.push_back("The font " + quotedExcerpt(font) +
                                 " is not installed; the system font is written in its place.");
    }
    written.losses.insert(written.losses.end(), file->losses.begin(), file->losses.end());
    return written;
}

Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    const Ref<QzAnnoPalette> palette = file ? paletteFromData(file, &reason) : nullptr;
    if (!palette) error = path + ": " + reason;
    return palette;
}

}  // namespace qz::composer
