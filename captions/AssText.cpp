#include "captions/AssText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "captions/AsciiText.h"
#include "captions/AssOverride.h"
#include "captions/PadPlace.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

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
        lineStyle_ = style_ = styleNamed(event.style);
        padPlace_ = style_->alignment;
        if (reader.isDefaultNamed_ || lineName() != "Default") begin(CueSpan::styleClass, std::string(lineName()));
        if (!event.speaker.empty()) begin(CueSpan::voice, std::string(event.speaker));
        fixed_ = open_.size();
    }

    AssText read() {
        std::string_view rest = event_.text;
        // After the last closing brace, opening braces are text.
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
        result_.isDrawing = hasDrawing_ && result_.text.text.find_first_not_of(u" \n\u00A0") == std::u16string::npos;
        tellLine();
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

    void tellNotShown(std::string message, std::string matter = {}) {
        reader_.problems_.addOnce(CaptionProblem::notShown, event_.line, std::move(message), std::move(matter));
    }

    void tellLine() {
        if (event_.layer != 0)
            tellNotShown(
                "Layer " + shortestDecimal(event_.layer) + " is ignored; later lines are drawn over earlier ones",
                "Layer");
        if (!event_.effect.empty())
            tellNotShown("the effect " + quotedExcerpt(event_.effect) + " is ignored", "Effect");
    }

    std::string_view lineName() const {
        std::string_view name = event_.style;
        if (name.starts_with('*')) name.remove_prefix(1);
        return name.empty() ? "Default" : name;
    }

    const AssStyle* styleNamed(std::string_view name) const {
        static const AssStyle kDefault;
        const AssStyle* const style = reader_.script_.styleNamed(name);
        return style ? style : &kDefault;
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

    // Adds the text up to the next override, or a literal brace. Returns its length in bytes.
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
        if (isDrawing_) {
            tellNotShown("drawings are left out, and so are lines with nothing else");
            hasDrawing_ = true;
            return i;
        }
        std::u16string units = utf16FromUtf8(shown);
        std::ranges::replace(units, u'\0', u'\uFFFD');
        result_.text.text += units;
        return i;
    }

    void readOverrides(std::string_view inside) {
        forEachAssOverride(inside, [this](const AssOverride& override) {
            if (!readOverride(override)) tellNotShown("{\\" + oneLine(override.kind) + "} has no effect");
        });
    }

    bool readOverride(const AssOverride& override) {
        const auto& [text, kind, value] = override;
        if (kind == "b") return toggle(CueSpan::bold, value, style_->isBold);
        if (kind == "i") return toggle(CueSpan::italic, value, style_->isItalic);
        if (kind == "u") return toggle(CueSpan::underline, value, style_->isUnderlined);
        if (kind == "s") return toggle(CueSpan::strikeThrough, value, style_->isStruck);
        if (kind == "c" || kind == "1c") return colour(value);
        if (kind == "alpha" || kind == "1a") return alpha(kind, value);
        if (kind == "p") {
            isDrawing_ = !value.empty() && value != "0";
            return true;
        }
        if (kind == "pos") return position(value);
        if (kind == "an" || kind == "a") {
            // The first one counts.
            const auto place = padPlace(text);
            if (place && !isPlaced_) padPlace_ = *place;
            isPlaced_ |= place.has_value();
            return place.has_value();
        }
        // A style's name follows the letter directly.
        if (text.starts_with('r')) return reset(trimmed(text.substr(1)));
        return false;
    }

    bool toggle(CueSpan::Kind kind, std::string_view value, bool isStyles) {
        end(kind);
        if (value.empty()) return true;
        int number = 0;
        std::from_chars(value.data(), value.data() + value.size(), number);
        const bool isWeight = kind == CueSpan::bold && number >= 100;
        if (isWeight && number != 400 && number != 700)
            tellNotShown(
                "weights are either regular or bold; {\\b" + std::to_string(number) + "} is drawn as the nearer one",
                "weight");
        // 400 is regular.
        if (isWeight ? number > 400 : number == 1)
            begin(kind, {});
        else if (isStyles)
            begin(kind, "0");
        return true;
    }

    bool colour(std::string_view value) {
        colour_ = value.empty() ? std::nullopt : parsedAssColour(value);
        showColour();
        return colour_ || value.empty();
    }

    bool alpha(std::string_view kind, std::string_view value) {
        const auto parsed = value.empty() ? std::nullopt : parsedAssColour(value);
        alpha_ = parsed ? std::optional(static_cast<uint8_t>(255 - parsed->red)) : std::nullopt;
        showColour();
        if (parsed && kind == "alpha")
            tellNotShown("{\\alpha} applies only to the letters, not to what is beneath them");
        return parsed || value.empty();
    }

    void showColour() {
        end(CueSpan::colour);
        if (!colour_ && !alpha_) return;
        CaptionColour shown = colour_.value_or(style_->primary);
        shown.alpha = alpha_.value_or(style_->primary.alpha);
        begin(CueSpan::colour, nameOfColour(shown));
    }

    bool reset(std::string_view name) {
        while (open_.size() > fixed_) close(open_.size() - 1);
        colour_.reset();
        alpha_.reset();
        if (name.starts_with('*')) name.remove_prefix(1);
        const bool isLines = name.empty() || name == lineName();
        style_ = isLines ? lineStyle_ : styleNamed(name);
        if (!isLines) begin(CueSpan::reset, std::string(name));
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
        if (event_.marginLeft > 0 || event_.marginRight > 0) {
            const double left = event_.marginLeft > 0 ? event_.marginLeft : lineStyle_->marginLeft;
            const double right = event_.marginRight > 0 ? event_.marginRight : lineStyle_->marginRight;
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
    // The number of open spans that nothing closes: the line's style and speaker.
    size_t fixed_ = 0;
    // The script's style, or one with defaults.
    const AssStyle* lineStyle_ = nullptr;
    // The style set by a reset.
    const AssStyle* style_ = nullptr;
    std::optional<CaptionColour> colour_;
    std::optional<uint8_t> alpha_;
    bool isDrawing_ = false;
    bool hasDrawing_ = false;
    int padPlace_ = 2;
    bool isPlaced_ = false;
    std::optional<std::pair<double, double>> point_;
};

AssText AssTextReader::read(const AssEvent& event) {
    return Builder(*this, event).read();
}

}  // namespace qz
