#include "captions/AssScript.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "QzAnno/platform/foundation/Limits.h"
#include "captions/AsciiText.h"
#include "captions/CaptionEncoding.h"
#include "captions/PadPlace.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

constexpr std::string_view kBlanks = " \t\f";
// Larger than any screen or font, and keeps sums exact.
constexpr double kNumberMax = 1e6;

bool equalNames(std::string_view a, std::string_view b) {
    return lowered(a) == lowered(b);
}

std::optional<double> parsedNumber(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !std::isfinite(value) || std::abs(value) > kNumberMax) return {};
    return end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

/// "0:01:02.50"
std::optional<double> parsedTime(std::string_view text) {
    double seconds = 0;
    for (int field = 0; field < 3; ++field) {
        const size_t end = field < 2 ? text.find(':') : text.size();
        if (end == std::string_view::npos) return {};
        const auto value = parsedNumber(text.substr(0, end));
        if (!value || *value < 0) return {};
        seconds = seconds * 60 + *value;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    // Players use hundredths.
    return std::round(seconds * 100) / 100;
}

/// The columns of a line in a section.
class Row {
public:
    Row(const std::vector<std::string_view>& names, std::string_view values) : names_(names) {
        for (size_t i = 0; i < names.size(); ++i) {
            // Text is the last column and may contain commas.
            const size_t end = i + 1 < names.size() ? std::min(values.find(','), values.size()) : values.size();
            values_.push_back(values.substr(0, end));
            values.remove_prefix(std::min(end + 1, values.size()));
        }
    }

    /// The raw value; empty if there is no such column.
    std::string_view raw(std::string_view name) const {
        const auto found = std::ranges::find_if(names_, [&](std::string_view each) { return equalNames(each, name); });
        return found == names_.end() ? std::string_view() : values_[static_cast<size_t>(found - names_.begin())];
    }
    std::string_view text(std::string_view name) const { return trimmed(raw(name), kBlanks); }

    /// Leaves the variable unchanged if the value cannot be read.
    void read(std::string_view name, double& number) { take(name, number, parsedNumber(text(name))); }
    void read(std::string_view name, int& number) {
        double value = number;
        read(name, value);
        number = static_cast<int>(value);
    }
    void read(std::string_view name, bool& flag) {
        double value = flag ? 1 : 0;
        read(name, value);
        flag = value != 0;
    }
    void read(std::string_view name, CaptionColour& colour) { take(name, colour, parsedAssColour(text(name))); }
    void read(std::string_view name, double& seconds, double ifMissing) {
        seconds = ifMissing;
        take(name, seconds, parsedTime(text(name)));
    }

    /// The values that could not be read: "Fontsize "abc"".
    const std::vector<std::string>& unread() const { return unread_; }

private:
    template <class Value>
    void take(std::string_view name, Value& value, const std::optional<Value>& parsed) {
        if (parsed)
            value = *parsed;
        else if (!text(name).empty())
            unread_.push_back(std::string(name) + " " + quotedExcerpt(text(name)));
    }

    const std::vector<std::string_view>& names_;
    std::vector<std::string_view> values_;
    std::vector<std::string> unread_;
};

std::vector<std::string_view> columnNames(std::string_view list) {
    // More than any script has, to bound the rows of a hostile one.
    constexpr size_t kColumnsMax = 64;
    std::vector<std::string_view> names;
    while (!list.empty() && names.size() < kColumnsMax) {
        const size_t end = std::min(list.find(','), list.size());
        names.push_back(trimmed(list.substr(0, end), kBlanks));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return names;
}

constexpr std::string_view kStyleColumns =
    "Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, Bold, Italic, Underline, "
    "StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, "
    "Encoding";
constexpr std::string_view kEventColumns = "Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text";

class Parser {
public:
    Parser(AssScript& script, CaptionProblems& problems) : script_(script), problems_(problems) {}

    /// Whether there were styles or events.
    bool parse(std::string_view text) {
        while (!text.empty()) {
            const size_t end = std::min(text.find('\n'), text.size());
            ++line_;
            parseLine(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        // If only one is given, the screen is 4:3, as in players.
        if (width_ > 0 || height_ > 0) {
            script_.height = height_ > 0 ? height_ : width_ * 3 / 4;
            script_.width = width_ > 0 ? width_ : height_ * 4 / 3;
        }
        return isScript_;
    }

private:
    enum class Section { none, info, styles, oldStyles, events };

    void report(std::string message, CaptionProblem::Kind kind = CaptionProblem::malformed) {
        problems_.add(kind, line_, std::move(message));
    }

    void tellNotShown(std::string message) { problems_.addOnce(CaptionProblem::notShown, line_, std::move(message)); }

    void parseLine(std::string_view line) {
        const std::string_view content = trimmed(line, kBlanks);
        if (content.empty() || content.starts_with(';') || content.starts_with("!:")) return;
        if (content.starts_with('[') && content.ends_with(']')) return beginSection(content);
        const size_t colon = line.find(':');
        if (section_ == Section::none || colon == std::string_view::npos) return;
        const std::string_view name = trimmed(line.substr(0, colon), kBlanks);
        std::string_view value = line.substr(colon + 1);
        if (section_ == Section::info) return readInfo(name, trimmed(value, kBlanks));
        if (equalNames(name, "Format")) {
            columns_ = columnNames(value);
        } else if (section_ == Section::events) {
            if (equalNames(name, "Dialogue"))
                readEvent(value);
            else if (!equalNames(name, "Comment"))
                tellNotShown(quotedExcerpt(name) + " lines have no effect");
        } else if (equalNames(name, "Style")) {
            readStyle(value);
        }
    }

    void beginSection(std::string_view title) {
        constexpr std::pair<std::string_view, Section> kSections[] = {{"[Script Info]", Section::info},
                                                                      {"[V4+ Styles]", Section::styles},
                                                                      {"[V4 Styles]", Section::oldStyles},
                                                                      {"[Events]", Section::events}};
        section_ = Section::none;
        for (const auto& [name, section] : kSections) {
            if (equalNames(title, name)) section_ = section;
        }
        if (equalNames(title, "[Fonts]"))
            tellNotShown("the fonts in the script are not used; give their folder with --font-dir");
        if (equalNames(title, "[Graphics]")) tellNotShown("the pictures in the script are not shown");
        isScript_ |= section_ != Section::none && section_ != Section::info;
        columns_ = columnNames(section_ == Section::events ? kEventColumns : kStyleColumns);
    }

    void readInfo(std::string_view name, std::string_view value) {
        double* const size = equalNames(name, "PlayResX") ? &width_ : equalNames(name, "PlayResY") ? &height_ : nullptr;
        if (!size) return tellSetting(name, value);
        const auto number = parsedNumber(value);
        if (number && *number >= 1)
            *size = *number;
        else
            report(std::string(name) + " " + quotedExcerpt(value) + " is not a screen size and is ignored");
    }

    // Reports settings that affect a script's looks, unless they have the supported value.
    void tellSetting(std::string_view name, std::string_view value) {
        constexpr struct {
            const char *name, *drawn, *instead;
        } kSettings[] = {
            {"WrapStyle", "1", "lines are filled from the first line on"},
            {"ScaledBorderAndShadow", "yes", "outlines and shadows are scaled with the screen"},
            {"YCbCr Matrix", "None", "colours are RGB, unconverted"},
            {"Collisions", "Normal", "later lines make room"},
            {"Timer", "100.0000", "times are used unchanged"},
            {"Kerning", "yes", "letters are kerned"},
            {"Language", "", "give the language with --lang"},
        };
        for (const auto& setting : kSettings) {
            if (!equalNames(name, setting.name) || value.empty() || equalNames(value, setting.drawn)) continue;
            if (parsedNumber(value) && parsedNumber(value) == parsedNumber(setting.drawn)) continue;
            tellNotShown(std::string(name) + " " + quotedExcerpt(value) + " is ignored; " + setting.instead);
        }
    }

    void tellUnread(const Row& row) {
        for (const std::string& column : row.unread()) report(column + " cannot be read; the default is used");
    }

    void readStyle(std::string_view values) {
        Row row(columns_, values);
        AssStyle style;
        style.line = line_;
        if (!row.text("Name").empty()) style.name = row.text("Name");
        if (style.name.starts_with('*')) style.name.erase(0, 1);
        if (!row.text("Fontname").empty()) style.fontName = row.text("Fontname");
        // "@" requests the upright letters of a vertical font.
        if (style.fontName.starts_with('@')) style.fontName.erase(0, 1);
        row.read("Fontsize", style.fontSize);
        row.read("PrimaryColour", style.primary);
        row.read("BackColour", style.back);
        row.read("OutlineColour", style.outline);
        row.read("Bold", style.isBold);
        row.read("Italic", style.isItalic);
        row.read("Underline", style.isUnderlined);
        row.read("StrikeOut", style.isStruck);
        row.read("Spacing", style.spacing);
        row.read("BorderStyle", style.borderStyle);
        row.read("Outline", style.outlineWidth);
        row.read("Shadow", style.shadow);
        row.read("Alignment", style.alignment);
        row.read("MarginL", style.marginLeft);
        row.read("MarginR", style.marginRight);
        row.read("MarginV", style.marginVertical);
        if (section_ == Section::oldStyles) {
            style.outline = style.back;
            style.alignment = padPlaceOfOld(style.alignment).value_or(2);
        }
        if (style.alignment < 1 || style.alignment > 9) style.alignment = 2;
        if (style.fontSize <= 0) style.fontSize = AssStyle().fontSize;
        for (double* length :
             {&style.outlineWidth, &style.shadow, &style.marginLeft, &style.marginRight, &style.marginVertical})
            *length = std::max(*length, 0.0);
        readUnsupported(row, style);
        tellUnread(row);
        if (script_.styles.size() >= static_cast<size_t>(Limits::kAnnotationsMax)) {
            return report("there are more than " + std::to_string(Limits::kAnnotationsMax) +
                          " styles; this one is ignored");
        }
        // Of styles with one name the last counts.
        script_.stylePlaces.insert_or_assign(style.name, script_.styles.size());
        script_.styles.push_back(std::move(style));
    }

    static void readUnsupported(Row& row, AssStyle& style) {
        constexpr std::pair<const char*, double> kUsual[] = {{"ScaleX", 100}, {"ScaleY", 100}, {"Angle", 0}};
        for (const auto& [name, usual] : kUsual) {
            double value = usual;
            row.read(name, value);
            if (value != usual) style.unsupported.emplace_back(name);
        }
    }

    void readEvent(std::string_view values) {
        Row row(columns_, values);
        AssEvent event;
        event.line = line_;
        event.style = row.text("Style");
        event.speaker = row.text("Name");
        if (event.speaker.empty()) event.speaker = row.text("Actor");
        event.text = row.raw("Text");
        event.effect = row.text("Effect");
        row.read("Layer", event.layer);
        row.read("Start", event.start, -1);
        row.read("End", event.end, -1);
        row.read("MarginL", event.marginLeft);
        row.read("MarginR", event.marginRight);
        row.read("MarginV", event.marginVertical);
        if (event.start < 0 || event.end < 0) {
            return report("the times " + quotedExcerpt(row.text("Start")) + " and " + quotedExcerpt(row.text("End")) +
                              " are not written as 0:01:02.50; the line is skipped",
                          CaptionProblem::notShown);
        }
        if (event.text.size() > Limits::kTitleUnitsMax) {
            return report("the line has " + std::to_string(event.text.size()) + " characters; " +
                              std::to_string(Limits::kTitleUnitsMax) + " is the limit; it is skipped",
                          CaptionProblem::notShown);
        }
        if (event.end < event.start) {
            report("the line ends before it starts; it is kept with no duration");
            event.end = event.start;
        }
        tellUnread(row);
        script_.events.push_back(event);
    }

    AssScript& script_;
    CaptionProblems& problems_;
    uint32_t line_ = 0;
    Section section_ = Section::none;
    std::vector<std::string_view> columns_;
    bool isScript_ = false;
    double width_ = 0;
    double height_ = 0;
};

}  // namespace

std::optional<CaptionColour> parsedAssColour(std::string_view text) {
    text = trimmed(text, kBlanks);
    int base = 10;
    if (text.starts_with("&H") || text.starts_with("&h") || text.starts_with("0x")) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.ends_with('&')) text.remove_suffix(1);
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    // Old writers use negative numbers, whose lower 32 bits count.
    if (error != std::errc() || end != text.data() + text.size()) return {};
    const auto bits = static_cast<uint32_t>(value);
    return CaptionColour{static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits >> 16),
                         static_cast<uint8_t>(255 - (bits >> 24))};
}

const AssStyle* AssScript::styleNamed(std::string_view name) const {
    if (name.starts_with('*')) name.remove_prefix(1);
    const auto found = stylePlaces.find(name);
    if (found != stylePlaces.end()) return &styles[found->second];
    const auto otherwise = stylePlaces.find("Default");
    return otherwise == stylePlaces.end() ? nullptr : &styles[otherwise->second];
}

const AssStyle* AssScript::globalStyle() const {
    const AssStyle* const style = styleNamed("Default");
    return style || styles.empty() ? style : &styles.front();
}

std::optional<AssScript> parseAssScript(const NSData& file, CaptionProblems& problems, CaptionProblem* error) {
    const std::optional<std::string> text = unicodeTextOfFile(file, problems, error);
    if (!text) return {};
    AssScript script;
    script.text = std::make_unique<const std::string>(withLineFeeds(*text));
    if (Parser(script, problems).parse(*script.text)) return script;
    if (error)
        *error = {CaptionProblem::malformed, 1, "is not a SubStation Alpha script; it has neither styles nor events"};
    return {};
}

}  // namespace qz
