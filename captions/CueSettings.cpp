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
// Values from drafts of the format are read with their old meaning, and reported.
constexpr std::pair<std::string_view, Alignment> kOldAlignments[] = {{"middle", Alignment::centre}};
constexpr std::pair<std::string_view, Edge> kLineEdges[] = {
    {"start", Edge::start}, {"center", Edge::centre}, {"end", Edge::end}};
constexpr std::pair<std::string_view, Edge> kOldLineEdges[] = {{"middle", Edge::centre}};
constexpr std::pair<std::string_view, Edge> kPositionEdges[] = {
    {"line-left", Edge::start}, {"center", Edge::centre}, {"line-right", Edge::end}};
constexpr std::pair<std::string_view, Edge> kOldPositionEdges[] = {
    {"start", Edge::start}, {"middle", Edge::centre}, {"end", Edge::end}};

// A number of digits with at most one point and an optional sign.
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

enum class Form { good, doubtful, unknown };

/// The edge of a line or a position. An unknown edge is ignored, keeping the number before it.
template <size_t count, size_t oldCount>
Form readEdge(std::string_view name, const std::pair<std::string_view, Edge> (&edges)[count],
              const std::pair<std::string_view, Edge> (&oldEdges)[oldCount], std::optional<Edge>& edge) {
    edge = named(name, edges);
    if (edge || name.empty()) return Form::good;
    edge = named(name, oldEdges);
    return Form::doubtful;
}

Form readLine(std::string_view value, CuePlacement& placement) {
    const auto [place, edge] = inTwo(value);
    const bool isPercentage = place.ends_with('%');
    const auto distance = isPercentage ? percentage(place) : number(place);
    if (!distance) return Form::unknown;
    std::optional<Edge> lineEdge;
    const Form form = readEdge(edge, kLineEdges, kOldLineEdges, lineEdge);
    placement.line = CuePlacement::Line{*distance, isPercentage, lineEdge.value_or(Edge::start)};
    return form;
}

Form readPosition(std::string_view value, CuePlacement& placement) {
    const auto [place, edge] = inTwo(value);
    const auto position = percentage(place);
    if (!position) return Form::unknown;
    placement.position = position;
    return readEdge(edge, kPositionEdges, kOldPositionEdges, placement.positionEdge);
}

template <class Value>
Form take(const std::optional<Value>& value, std::optional<Value>& into, Form form = Form::good) {
    if (value) into = value;
    return value ? form : Form::unknown;
}

Form readSetting(std::string_view name, std::string_view value, CuePlacement& placement) {
    if (name == "line") return readLine(value, placement);
    if (name == "position") return readPosition(value, placement);
    if (name == "size") return take(percentage(value), placement.size);
    if (name != "align") return Form::unknown;
    const Form form = take(named(value, kAlignments), placement.alignment);
    return form == Form::good ? form : take(named(value, kOldAlignments), placement.alignment, Form::doubtful);
}

}  // namespace

CuePlacement parseCueSettings(std::string_view settings, uint32_t line, CaptionProblems& problems) {
    CuePlacement placement;
    while (true) {
        settings.remove_prefix(std::min(settings.find_first_not_of(kBlanks), settings.size()));
        if (settings.empty()) return placement;
        const std::string_view setting = settings.substr(0, settings.find_first_of(kBlanks));
        settings.remove_prefix(setting.size());
        const size_t colon = std::min(setting.find(':'), setting.size());
        const std::string_view name = setting.substr(0, colon);
        const std::string_view value = setting.substr(std::min(colon + 1, setting.size()));
        const std::string what = "the setting " + quotedExcerpt(setting);
        if ((name == "vertical" || name == "region") && !value.empty()) {
            problems.addOnce(CaptionProblem::notShown, line,
                             what + " is ignored; text is set in lines on the whole screen",
                             "setting " + std::string(name));
            continue;
        }
        const Form form = readSetting(name, value, placement);
        if (form == Form::doubtful)
            problems.add(CaptionProblem::malformed, line,
                         what + " is an obsolete form; it is read with its old meaning");
        else if (form == Form::unknown)
            problems.add(CaptionProblem::malformed, line, what + " is not a setting of captions and is ignored");
    }
}

}  // namespace qz
