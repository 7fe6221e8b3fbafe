#include "captions/CueSettings.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

using Alignment = CuePlacement::Alignment;
using Edge = CuePlacement::Edge;

constexpr std::string_view kBlanks = " \t\f";

template <class Value, size_t count>
std::optional<Value> named(std::string_view name, const std::pair<std::string_view, Value> (&values)[count]) {
    const auto* const found = std::ranges::find(values, name, &std::pair<std::string_view, Value>::first);
    return found == std::end(values) ? std::nullopt : std::optional(found->second);
}

constexpr std::pair<std::string_view, Alignment> kAlignments[] = {{"start", Alignment::start},
                                                                  {"center", Alignment::centre},
                                                                  {"end", Alignment::end},
                                                                  {"left", Alignment::left},
                                                                  {"right", Alignment::right}};
constexpr std::pair<std::string_view, Edge> kLineEdges[] = {
    {"start", Edge::start}, {"center", Edge::centre}, {"end", Edge::end}};
constexpr std::pair<std::string_view, Edge> kPositionEdges[] = {
    {"line-left", Edge::start}, {"center", Edge::centre}, {"line-right", Edge::end}};

// Digits with at most one point among them, and a sign before them.
std::optional<double> number(std::string_view text) {
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    if (digits.empty() || digits.front() == '.' || digits.back() == '.' ||
        digits.find_first_not_of("0123456789.") != std::string_view::npos)
        return {};
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end ? std::optional(value) : std::nullopt;
}

std::optional<double> percentage(std::string_view text) {
    if (!text.ends_with('%')) return {};
    const auto value = number(text.substr(0, text.size() - 1));
    return value && *value >= 0 && *value <= 100 ? value : std::nullopt;
}

/// "10%,line-left" in two.
std::pair<std::string_view, std::string_view> inTwo(std::string_view value) {
    const size_t comma = value.find(',');
    return comma == std::string_view::npos ? std::pair(value, std::string_view())
                                           : std::pair(value.substr(0, comma), value.substr(comma + 1));
}

bool readLine(std::string_view value, CuePlacement& placement) {
    const auto [place, edge] = inTwo(value);
    CuePlacement::Line line;
    line.isPercentage = place.ends_with('%');
    const auto distance = line.isPercentage ? percentage(place) : number(place);
    const auto lineEdge = edge.empty() ? Edge::start : named(edge, kLineEdges);
    if (!distance || !lineEdge) return false;
    line.value = *distance;
    line.edge = *lineEdge;
    placement.line = line;
    return true;
}

bool readPosition(std::string_view value, CuePlacement& placement) {
    const auto [place, edge] = inTwo(value);
    const auto position = percentage(place);
    const auto positionEdge = named(edge, kPositionEdges);
    if (!position || (!edge.empty() && !positionEdge)) return false;
    placement.position = position;
    placement.positionEdge = positionEdge;
    return true;
}

template <class Value>
bool take(const std::optional<Value>& value, std::optional<Value>& into) {
    if (value) into = value;
    return value.has_value();
}

}  // namespace

CuePlacement parseCueSettings(std::string_view settings, uint32_t line, std::vector<CaptionProblem>& problems) {
    CuePlacement placement;
    while (true) {
        settings.remove_prefix(std::min(settings.find_first_not_of(kBlanks), settings.size()));
        if (settings.empty()) return placement;
        const std::string_view setting = settings.substr(0, settings.find_first_of(kBlanks));
        settings.remove_prefix(setting.size());
        const size_t colon = std::min(setting.find(':'), setting.size());
        const std::string_view name = setting.substr(0, colon);
        const std::string_view value = setting.substr(std::min(colon + 1, setting.size()));
        const bool isKnown = (name == "line" && readLine(value, placement)) ||
                             (name == "position" && readPosition(value, placement)) ||
                             (name == "size" && take(percentage(value), placement.size)) ||
                             (name == "align" && take(named(value, kAlignments), placement.alignment));
        if (isKnown) continue;
        const bool isNotShown = (name == "vertical" || name == "region") && !value.empty();
        problems.push_back({CaptionProblem::malformed, line,
                            "the setting " + quotedExcerpt(setting) +
                                (isNotShown ? " is ignored; text is set in lines on the whole screen"
                                            : " is none that captions have, and is ignored")});
    }
}

}  // namespace qz
