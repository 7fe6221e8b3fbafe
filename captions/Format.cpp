#include "captions/Format.h"

#include <algorithm>

#include "captions/ArchivedTitles.h"
#include "captions/Ass.h"
#include "captions/AssWriter.h"
#include "captions/CueText.h"
#include "captions/PlainText.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"
#include "captions/WebVTTWriter.h"
#include "platform/foundation/FileEnding.h"

namespace qz {
namespace {

// The C interface numbers the caption formats by their position here, so append new ones.
const Format kFormats[] = {
    {Format::captions,
     "SubRip",
     {".srt"},
     "application/x-subrip",
     beginsAsSubRip,
     readSubRip,
     nullptr,
     Format::markup | Format::comments,
     false},
    {Format::captions, "WebVTT", {".vtt"}, "text/vtt", beginsAsWebVTT, readWebVTT, writeWebVTT, 0, true},
    {Format::captions,
     "SubStation Alpha",
     {".ass", ".ssa"},
     "text/x-ssa",
     beginsAsAss,
     readAss,
     writeAss,
     Format::identifiers | Format::markup | Format::comments,
     false},
    {Format::text,
     "Plain text",
     {".txt"},
     "",
     nullptr,
     readPlainText,
     nullptr,
     Format::times | Format::identifiers | Format::places | Format::markup | Format::comments,
     false},
    {Format::archive,
     "Archived titles",
     {".annostring"},
     "application/x-qzanno-titles",
     beginsAsArchive,
     readArchive,
     writeArchive,
     Format::times | Format::identifiers | Format::places | Format::markup | Format::comments,
     true},
};

const Format* formatOfEnding(std::string_view ending) {
    const auto* const found = std::ranges::find_if(kFormats, [&](const Format& format) {
        return std::ranges::find(format.endings, ending) != format.endings.end();
    });
    return found == std::end(kFormats) ? nullptr : found;
}

/// The name of a part in messages.
struct PartName {
    Format::Part part;
    const char* name;
};
constexpr PartName kPartNames[] = {
    {Format::times, "the times of titles"},
    {Format::identifiers, "the identifiers of captions"},
    {Format::places, "the places of captions"},
    {Format::markup, "which names are speakers, nor other markup of captions"},
    {Format::comments, "what a caption file says besides its titles"},
};

unsigned partsOf(const CaptionFile& captions) {
    const bool hasComments = captions.header.size() > std::string_view("WEBVTT").size() || !captions.trailer.empty();
    unsigned parts = 0;
    if (hasComments) parts |= Format::comments;
    for (const CaptionCue& cue : captions.cues) {
        if (cue.hasTimes) parts |= Format::times;
        if (!cue.identifier.empty()) parts |= Format::identifiers;
        if (!cue.settings.empty() || !cue.placement.isEmpty()) parts |= Format::places;
        if (!cue.preamble.empty()) parts |= Format::comments;
        const CueText text = parseCueText(cue.payload, 1);
        const bool hasMarkup = !text.dropped.empty() || std::ranges::any_of(text.spans, [](const CueSpan& span) {
            return span.kind == CueSpan::voice || span.kind == CueSpan::language;
        });
        if (hasMarkup) parts |= Format::markup;
    }
    return parts;
}

}  // namespace

std::span<const Format> formats() {
    return kFormats;
}

const Format* formatOfPath(std::string_view path) {
    return formatOfEnding(endingOf(path));
}

const Format* formatToWrite(std::string_view path) {
    const std::string ending = endingOf(path);
    const Format* const format = formatOfEnding(ending);
    return format && format->write && format->ending() == ending ? format : nullptr;
}

const Format* formatOfContent(std::string_view bytes) {
    const auto* const found =
        std::ranges::find_if(kFormats, [&](const Format& format) { return format.begins && format.begins(bytes); });
    return found == std::end(kFormats) ? nullptr : found;
}

std::vector<std::string> endingsOf(unsigned kinds) {
    std::vector<std::string> endings;
    for (const Format& format : kFormats) {
        if (format.kind & kinds) endings.insert(endings.end(), format.endings.begin(), format.endings.end());
    }
    return endings;
}

std::vector<std::string> writtenEndingsOf(unsigned kinds) {
    std::vector<std::string> endings;
    for (const Format& format : kFormats) {
        if (format.kind & kinds && format.write) endings.emplace_back(format.ending());
    }
    return endings;
}

std::string listOf(const std::vector<std::string>& words, std::string_view last) {
    std::string list;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) list += i + 1 < words.size() ? std::string_view(", ") : last;
        list += words[i];
    }
    return list;
}

std::vector<std::string> lossesIn(const Format& format, const CaptionFile& captions) {
    std::vector<std::string> losses;
    const unsigned lost = partsOf(captions) & format.cannotHold;
    for (const auto& [part, name] : kPartNames) {
        if (lost & part) losses.push_back(std::string(format.name) + " cannot keep " + name + ".");
    }
    return losses;
}

}  // namespace qz
