#include "captions/WebVTTWriter.h"

#include <charconv>
#include <cmath>

#include "captions/ClockTime.h"
#include "captions/CueTextWriter.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

constexpr std::string_view kBegin = "WEBVTT";
// The reader's limit.
constexpr double kTimeEnd = 1e9 * 3600;

const char* problemOf(const CaptionCue& cue) {
    if (!(cue.start >= 0 && cue.start <= cue.end && cue.end < kTimeEnd)) return "its times are not in order";
    if (cue.identifier.find_first_of("\n\r") != std::string::npos || cue.identifier.find("-->") != std::string::npos)
        return "its identifier has a line end or an arrow";
    if (cue.settings.find_first_of("\n\r") != std::string::npos) return "its settings have a line end";
    return nullptr;
}

void addLosses(const WrittenCueText& text, const std::string& place, std::vector<std::string>& losses) {
    if (!text.lostTags.empty()) {
        std::string tags;
        for (const std::string& tag : text.lostTags) tags += (tags.empty() ? "<" : ", <") + oneLine(tag) + ">";
        losses.push_back(place + tags + (text.lostTags.size() == 1 ? " is gone" : " are gone"));
    }
    for (const std::string& name : text.unnamed)
        losses.push_back(place + "the annotation " + quotedExcerpt(name) +
                         " is left out, since captions cannot hold its name; rename it");
    for (const std::string& name : text.covered)
        losses.push_back(place + "the annotation " + quotedExcerpt(name) +
                         " is lost under another colour or language, since captions have one at a time");
    for (const std::string& name : text.mistaken)
        losses.push_back(place + "the annotation " + quotedExcerpt(name) +
                         " becomes another one of that name; rename one of them");
}

std::string number(double value) {
    char digits[400];
    const auto [end, error] = std::to_chars(digits, std::end(digits), value, std::chars_format::fixed);
    return error == std::errc() ? std::string(digits, end) : "0";
}

const char* nameOf(CuePlacement::Alignment alignment) {
    static constexpr const char* names[] = {"start", "center", "end", "left", "right"};
    return names[static_cast<size_t>(alignment)];
}

}  // namespace

std::optional<WrittenCaptions> writeWebVTT(const CaptionFile& captions, const CaptionStage& stage,
                                           std::string& reason) {
    WrittenCaptions written{captions.header.starts_with(kBegin) ? captions.header : std::string(kBegin), {}};
    for (size_t i = 0; i < captions.cues.size(); ++i) {
        const CaptionCue& cue = captions.cues[i];
        const std::string place = "title " + std::to_string(i + 1) + ": ";
        if (const char* problem = problemOf(cue)) {
            reason = place + problem;
            return {};
        }
        const auto text = writeCueText(*cue.text, *stage.looks.palette(), cue.payload, reason);
        if (!text) {
            reason = place + reason;
            return {};
        }
        addLosses(*text, place, written.losses);
        if (!cue.preamble.empty()) written.file += "\n\n" + cue.preamble;
        written.file += "\n\n";
        if (!cue.identifier.empty()) written.file += cue.identifier + "\n";
        written.file += clockOf(cue.start) + " --> " + clockOf(cue.end);
        const std::string settings = cue.settings.empty() ? settingsOfPlacement(cue.placement) : cue.settings;
        if (!settings.empty()) written.file += " " + settings;
        if (!text->payload.empty()) written.file += "\n" + text->payload;
    }
    if (!captions.trailer.empty()) written.file += "\n\n" + captions.trailer;
    written.file += "\n";
    return written;
}

std::string settingsOfPlacement(const CuePlacement& placement) {
    using Edge = CuePlacement::Edge;
    std::string settings;
    const auto add = [&settings](const std::string& setting) { settings += (settings.empty() ? "" : " ") + setting; };
    if (placement.line) {
        const auto& [value, isPercentage, edge] = *placement.line;
        add("line:" + number(value) + (isPercentage ? "%" : "") +
            (edge == Edge::centre ? ",center"
             : edge == Edge::end  ? ",end"
                                  : ""));
    } else if (placement.row) {
        using Row = CuePlacement::Row;
        add(*placement.row == Row::top ? "line:0" : *placement.row == Row::centre ? "line:50%,center" : "line:-1");
    }
    if (placement.position) {
        const auto& edge = placement.positionEdge;
        add("position:" + number(*placement.position) + "%" +
            (!edge                   ? ""
             : *edge == Edge::start  ? ",line-left"
             : *edge == Edge::centre ? ",center"
                                     : ",line-right"));
    }
    if (placement.size) add("size:" + number(*placement.size) + "%");
    if (placement.alignment) add(std::string("align:") + nameOf(*placement.alignment));
    return settings;
}

}  // namespace qz
