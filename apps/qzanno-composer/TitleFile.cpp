#include "apps/qzanno-composer/TitleFile.h"

#include <algorithm>
#include <set>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "apps/qzanno-composer/TitleTimes.h"
#include "captions/ArchivedTitles.h"
#include "captions/Ass.h"
#include "captions/CueText.h"
#include "captions/PlainText.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"
#include "captions/WebVTTWriter.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz::composer {
namespace {

std::string placed(const std::string& path, const CaptionProblem& problem) {
    return path + ":" + std::to_string(problem.line) + ": " + problem.message;
}

Title titleOf(const CaptionCue& cue, bool isWebVTT) {
    // Other formats have placement in the text, and text after SubRip's times places nothing.
    const std::string settings = isWebVTT ? cue.settings : settingsOfPlacement(cue.placement);
    const CueSource source = {cue.identifier, settings, cue.payload, cue.preamble};
    return {cue.text, cue.start, cue.end, std::make_shared<const CueSource>(source)};
}

/// Names that would mean a different annotation in an archive than in the titles, each once.
std::set<std::string> mistakenNames(const TitleFile& titles, const QzAnnoPalette& palette) {
    std::set<std::string> names;
    for (const Title& title : titles.titles) {
        for (const Ref<QzAnnoKey>& key : title.text->allKeys()->objects<QzAnnoKey>()) {
            const Ref<QzAnnoKey> read = palette.findAnnoKey(key->name());
            if (read && read != key) names.insert(key->name()->utf8());
        }
    }
    return names;
}

/// What an archive would lose.
std::vector<std::string> lossesInArchive(const TitleFile& titles, const QzAnnoPalette& palette) {
    bool hasTimes = false, hasSettings = false, hasMarkup = false;
    bool hasComments = titles.header.size() > std::string_view("WEBVTT").size() || !titles.trailer.empty();
    for (const Title& title : titles.titles) {
        hasTimes |= title.start.has_value();
        if (!title.source) continue;
        hasSettings |= !title.source->identifier.empty() || !title.source->settings.empty();
        hasComments |= !title.source->preamble.empty();
        const CueText markup = parseCueText(title.source->payload, 1);
        hasMarkup |= !markup.dropped.empty() || std::ranges::any_of(markup.spans, [](const CueSpan& span) {
            return span.kind == CueSpan::voice || span.kind == CueSpan::language;
        });
    }
    std::vector<std::string> losses;
    if (hasTimes) losses.emplace_back("An archive does not keep the times of titles.");
    if (hasSettings) losses.emplace_back("An archive does not keep the identifiers and places of captions.");
    if (hasMarkup)
        losses.emplace_back("An archive does not keep which names are speakers, nor other markup of captions.");
    if (hasComments) losses.emplace_back("An archive does not keep what a caption file says besides its titles.");
    for (const std::string& name : mistakenNames(titles, palette))
        losses.push_back("The annotation " + quotedExcerpt(name) +
                         " becomes another one of that name; rename one of them.");
    return losses;
}

std::optional<WrittenTitles> titlesAsCaptions(TitleFile titles, const QzAnnoPalette& palette, std::string& reason) {
    CaptionFile captions;
    captions.header = titles.header;
    captions.trailer = titles.trailer;
    static const CueSource kNone;
    for (size_t i = 0; i < titles.titles.size(); ++i) {
        Title& title = titles.titles[i];
        if (!title.start || !title.end) giveTimes(titles.titles, i);
        const CueSource& source = title.source ? *title.source : kNone;
        captions.cues.push_back({*title.start,
                                 *title.end,
                                 source.identifier,
                                 source.settings,
                                 {},
                                 title.text->mutableCopy(),
                                 source.payload,
                                 source.preamble,
                                 0});
    }
    const auto written = writeWebVTT(captions, palette, reason);
    if (!written) return {};
    return WrittenTitles{NSData::dataWithBytes(written->file), written->losses};
}

using WholeReader = std::optional<CaptionFile> (*)(const NSData&, const CueNames&, CaptionProblem*);

/// Null unless the path names a caption file.
WholeReader readerOf(const std::string& path) {
    constexpr std::pair<std::string_view, WholeReader> kReaders[] = {
        {".vtt", readWebVTT}, {".srt", readSubRip}, {".ass", readAss}, {".ssa", readAss}};
    for (const auto& [ending, reader] : kReaders) {
        if (path.ends_with(ending)) return reader;
    }
    return nullptr;
}

}  // namespace

std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error) {
    const bool isText = path.ends_with(".txt");
    const bool isArchive = path.ends_with(".annostring");
    const bool isWebVTT = path.ends_with(".vtt");
    const auto reader = readerOf(path);
    if (!isText && !isArchive && !reader) {
        error = path +
                ": is no .vtt, .srt, .ass, .ssa, .txt or .annostring file; give captions, one title as text, or "
                "archived titles";
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
    LooseKeys others;
    CaptionLooks looks(QzAnnoPalette::init(), {1920, 1080});
    const CueNames names(*palette, others, looks);
    TitleFile titles;
    if (isText) {
        const auto text = readPlainText(*file, &problem);
        if (text) titles.titles.push_back({*text, {}, {}});
    } else if (const auto captions = reader(*file, names, &problem)) {
        for (const CaptionCue& cue : captions->cues) titles.titles.push_back(titleOf(cue, isWebVTT));
        titles.looks = looks.all();
        titles.header = captions->header;
        titles.trailer = captions->trailer;
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
    LooseKeys others;
    const auto read = archivedTitles(archive, palette, &reason, &others);
    if (!read) return {};
    TitleFile titles;
    for (const Ref<QzAnnoString>& string : read->strings) titles.titles.push_back({string, {}, {}});
    if (read->lostCount > 0)
        titles.warnings.push_back(std::to_string(read->lostCount) + " of its annotations cannot be read and are lost");
    for (const std::string& name : read->unknownNames) {
        titles.warnings.push_back("the palette has no annotation \"" + name +
                                  "\"; its text keeps the name and the look of the rest");
    }
    if (!titles.titles.empty()) return titles;
    reason = "holds no annotated string";
    return {};
}

std::optional<WrittenTitles> titlesAsFile(const std::string& path, const TitleFile& titles,
                                          const Ref<QzAnnoPalette>& palette, std::string& error) {
    std::optional<WrittenTitles> written;
    std::string reason = "titles are saved as captions or as an archive; let the name end in .vtt or .annostring";
    if (path.ends_with(".vtt")) {
        written = titlesAsCaptions(titles, *palette, reason);
    } else if (path.ends_with(".annostring")) {
        if (const auto archive = archiveOfTitles(titles.titles, palette, reason))
            written = WrittenTitles{archive, lossesInArchive(titles, *palette)};
    }
    if (!written) error = path + ": " + reason;
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
