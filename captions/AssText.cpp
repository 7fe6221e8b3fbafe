#include "captions/AssText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>

#include "captions/PadPlace.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/NSString.h"

namespace qz {
namespace {

std::string nameOf(const AssColour& colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.red, colour.green, colour.blue);
    return text;
}

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// "pos(320,240)"
std::optional<std::pair<double, double>> pointOf(std::string_view text) {
    double values[2] = {};
    for (double& value : values) {
        text = trimmed(text);
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || !std::isfinite(value)) return {};
        text.remove_prefix(static_cast<size_t>(end - text.data()));
        text = trimmed(text);
        if (&value == values && !text.starts_with(',')) return {};
        if (&value == values) text.remove_prefix(1);
    }
    return std::pair(values[0], values[1]);
}

}  // namespace

class AssTextReader::Builder {
public:
    Builder(AssTextReader& reader, const AssEvent& event) : reader_(reader), event_(event) {
        const AssStyle* const style = reader.script_.styleNamed(event.style);
        padPlace_ = style ? style->alignment : 2;
        // Every script has a style of that name, for what has no other.
        std::string_view name = event.style;
        if (name.starts_with('*')) name.remove_prefix(1);
        if (!name.empty() && name != "Default") begin(CueSpan::styleClass, std::string(name));
        if (!event.speaker.empty()) begin(CueSpan::voice, std::string(event.speaker));
        fixed_ = open_.size();
    }

    AssText read() {
        std::string_view rest = event_.text;
        // Behind the last closing brace every opening one is text.
        const size_t last = rest.rfind('}');
        const char* const closed = last == std::string_view::npos ? rest.data() : rest.data() + last;
        while (!rest.empty()) {
            if (rest.starts_with('{') && rest.data() < closed) {
                const size_t end = rest.find('}');
                readOverrides(rest.substr(1, end - 1));
                rest.remove_prefix(end + 1);
            } else {
                rest.remove_prefix(addText(rest));
            }
        }
        while (!open_.empty()) close(open_.size() - 1);
        std::erase_if(result_.text.spans, [](const CueSpan& span) { return span.range.length == 0; });
        place();
        return std::move(result_);
    }

private:
    struct Open {
        size_t span;
        CueSpan::Kind kind;
    };

    void reportOnce(const std::string& message) {
        if (reader_.told_.insert(message).second)
            reader_.problems_.push_back({CaptionProblem::malformed, event_.line, message});
    }

    uint32_t length() const { return static_cast<uint32_t>(result_.text.text.size()); }

    void begin(CueSpan::Kind kind, std::string name) {
        open_.push_back({result_.text.spans.size(), kind});
        result_.text.spans.push_back({kind, std::move(name), {length(), 0}, event_.line});
    }

    void close(size_t index) {
        CueSpan& span = result_.text.spans[open_[index].span];
        span.range.length = length() - span.range.location;
        open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void end(CueSpan::Kind kind) {
        for (size_t i = open_.size(); i-- > fixed_;) {
            if (open_[i].kind == kind) close(i);
        }
    }

    // The text up to the next override, or a brace that is one. How many bytes that was.
    size_t addText(std::string_view text) {
        std::string shown;
        size_t i = 0;
        do {
            const char next = i + 1 < text.size() ? text[i + 1] : '\0';
            if (text[i] != '\\' || (next != 'N' && next != 'n' && next != 'h' && next != '{' && next != '}')) {
                shown += text[i++];
                continue;
            }
            shown += next == 'N' ? "\n" : next == 'n' ? " " : next == 'h' ? "\u00A0" : std::string(1, next);
            i += 2;
        } while (i < text.size() && text[i] != '{');
        if (isDrawing_) return i;
        std::u16string units = utf16FromUtf8(shown);
        std::ranges::replace(units, u'\0', u'\uFFFD');
        result_.text.text += units;
        return i;
    }

    // "\i1\c&H00FF00&", with anything between the overrides.
    void readOverrides(std::string_view inside) {
        inside.remove_prefix(std::min(inside.find('\\'), inside.size()));
        while (!inside.empty()) {
            inside.remove_prefix(1);
            // What stands in brackets may hold overrides of its own: "\t(\fs20)". Without an end it reaches to the
            // last.
            size_t end = inside.find_first_of("(\\");
            if (end != std::string_view::npos && inside[end] == '(') {
                end = inside.find(')', end);
                if (end != std::string_view::npos) end = inside.find('\\', end);
            }
            const std::string_view override = inside.substr(0, end);
            if (!readOverride(trimmed(override))) reportOnce("{\\" + oneLine(kindOf(override)) + "} shows nothing");
            inside.remove_prefix(override.size());
        }
    }

    // "fs" of "fs20", "1c" of "1c&HFF&".
    static std::string_view kindOf(std::string_view override) {
        size_t end = 0;
        const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
        if (end < override.size() && override[end] >= '1' && override[end] <= '4') ++end;
        while (end < override.size() && end < 8 && isLetter(override[end])) ++end;
        return override.substr(0, end);
    }

    bool readOverride(std::string_view override) {
        const std::string_view kind = kindOf(override);
        const std::string_view value = trimmed(override.substr(kind.size()));
        if (kind == "b") return toggle(CueSpan::bold, value);
        if (kind == "i") return toggle(CueSpan::italic, value);
        if (kind == "u") return toggle(CueSpan::underline, value);
        if (kind == "c" || kind == "1c") return colour(value);
        if (kind == "p") {
            isDrawing_ = !value.empty() && value != "0";
            return true;
        }
        if (kind == "pos") return position(value);
        if (kind == "an" || kind == "a") {
            // The first counts.
            const auto place = padPlace(override);
            if (place && !isPlaced_) padPlace_ = *place;
            isPlaced_ |= place.has_value();
            return place.has_value();
        }
        // A style's name runs into the letter.
        if (override.starts_with('r')) return reset(trimmed(override.substr(1)));
        return false;
    }

    bool toggle(CueSpan::Kind kind, std::string_view value) {
        end(kind);
        // Weights of 100 to 900 as well; 400 is regular.
        int number = 0;
        std::from_chars(value.data(), value.data() + value.size(), number);
        if (number == 1 || number > 400) begin(kind, {});
        return true;
    }

    bool colour(std::string_view value) {
        end(CueSpan::colour);
        if (value.empty()) return true;
        const auto parsed = parsedAssColour(value);
        if (parsed) begin(CueSpan::colour, nameOf(*parsed));
        return parsed.has_value();
    }

    bool reset(std::string_view style) {
        while (open_.size() > fixed_) close(open_.size() - 1);
        if (!style.empty() && style != "Default") begin(CueSpan::styleClass, std::string(style));
        return true;
    }

    bool position(std::string_view value) {
        if (!value.starts_with('(')) return false;
        if (!point_) point_ = pointOf(value.substr(1));
        return point_.has_value();
    }

    void place() {
        CuePlacement& placement = result_.placement;
        const CuePlacement ofPad = placementOfPad(padPlace_);
        const bool isTop = padPlace_ >= 7;
        const bool isMiddle = padPlace_ >= 4 && padPlace_ <= 6;
        using Edge = CuePlacement::Edge;
        const Edge row = isTop ? Edge::start : isMiddle ? Edge::centre : Edge::end;
        const auto percent = [](double part, double whole) { return std::clamp(100 * part / whole, 0.0, 100.0); };
        if (isPlaced_ || point_) placement.alignment = ofPad.alignment;
        if (point_) {
            constexpr std::array kEdges = {Edge::start, Edge::centre, Edge::end};
            placement.position = percent(point_->first, reader_.script_.width);
            placement.positionEdge = kEdges[static_cast<size_t>((padPlace_ - 1) % 3)];
            placement.line = CuePlacement::Line{percent(point_->second, reader_.script_.height), true, row};
            return;
        }
        const AssStyle* const style = reader_.script_.styleNamed(event_.style);
        if (event_.marginLeft > 0 || event_.marginRight > 0) {
            const double left = event_.marginLeft > 0 || !style ? event_.marginLeft : style->marginLeft;
            const double right = event_.marginRight > 0 || !style ? event_.marginRight : style->marginRight;
            placement.position = percent(left, reader_.script_.width);
            placement.positionEdge = Edge::start;
            placement.size = percent(reader_.script_.width - left - right, reader_.script_.width);
        }
        if (event_.marginVertical > 0 && !isMiddle) {
            const double share = percent(event_.marginVertical, reader_.script_.height);
            placement.line = CuePlacement::Line{isTop ? share : 100 - share, true, row};
        } else if (isPlaced_) {
            placement.row = ofPad.row;
        }
    }

    AssTextReader& reader_;
    const AssEvent& event_;
    AssText result_;
    std::vector<Open> open_;
    // Of the open spans, those that nothing closes: the line's style and speaker.
    size_t fixed_ = 0;
    bool isDrawing_ = false;
    int padPlace_ = 2;
    bool isPlaced_ = false;
    std::optional<std::pair<double, double>> point_;
};

AssText AssTextReader::read(const AssEvent& event) {
    return Builder(*this, event).read();
}

}  // namespace qz
