#include "captions/SubRipText.h"

#include <algorithm>
#include <optional>

#include "QzAnno/platform/foundation/NSString.h"
#include "captions/AsciiText.h"
#include "captions/AssOverride.h"
#include "captions/AssScript.h"
#include "captions/CharacterReference.h"
#include "captions/PadPlace.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

constexpr std::string_view kSpace = " \t\f\n";
// The longest possible tag; anything longer is text between two signs.
constexpr size_t kTagBytesMax = 400;

/// `color="#ff0000" size=20`, attribute by attribute.
struct Attribute {
    std::string name;
    std::string_view value;
};

Attribute takeAttribute(std::string_view& rest) {
    rest = trimmed(rest, kSpace);
    const size_t nameEnd = std::min(rest.find_first_of("= \t\f\n"), rest.size());
    Attribute attribute{lowered(rest.substr(0, nameEnd)), {}};
    rest = trimmed(rest.substr(nameEnd), kSpace);
    if (!rest.starts_with('=')) return attribute;
    rest = trimmed(rest.substr(1), kSpace);
    if (rest.starts_with('"') || rest.starts_with('\'')) {
        const size_t end = std::min(rest.find(rest.front(), 1), rest.size());
        attribute.value = rest.substr(1, end - 1);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    } else {
        const size_t end = std::min(rest.find_first_of(kSpace), rest.size());
        attribute.value = rest.substr(0, end);
        rest.remove_prefix(end);
    }
    attribute.value = trimmed(attribute.value, kSpace);
    return attribute;
}

}  // namespace

class SubRipTextReader::Builder {
public:
    Builder(SubRipTextReader& reader, uint32_t line) : reader_(reader), line_(line) {}

    void addText(std::string_view text) {
        std::string resolved;
        for (size_t i = 0; i < text.size();) {
            const CharacterReference reference =
                text[i] == '&' ? characterReferenceAt(text.substr(i)) : CharacterReference{};
            const bool isWhole = reference.length > 0 && text[i + reference.length - 1] == ';';
            resolved += isWhole ? reference.utf8 : std::string(1, text[i]);
            i += isWhole ? reference.length : 1;
        }
        std::u16string units = utf16FromUtf8(resolved);
        std::ranges::replace(units, u'\0', u'\uFFFD');
        if (!units.empty()) openWanted();
        result_.text.text += units;
        line_ += static_cast<uint32_t>(std::ranges::count(text, '\n'));
    }

    // Handles "i", "/font", "font color=red"; returns false and does nothing if it is not a tag.
    bool addTag(std::string_view inside, bool isInBraces) {
        const bool isEnd = inside.starts_with('/');
        if (isEnd) inside.remove_prefix(1);
        inside = trimmed(inside, kSpace);
        const size_t nameEnd = std::min(inside.find_first_of(" \t\f\n/"), inside.size());
        const std::string name = lowered(inside.substr(0, nameEnd));
        const std::string_view rest = inside.substr(nameEnd);
        if (name == "font" && !isInBraces) {
            if (isEnd)
                end(CueSpan::colour, name);
            else
                start(CueSpan::colour, name, colourOf(rest));
        } else if (name == "b" && rest.empty()) {
            startOrEnd(isEnd, CueSpan::bold, name);
        } else if (name == "i" && rest.empty()) {
            startOrEnd(isEnd, CueSpan::italic, name);
        } else if (name == "u" && rest.empty()) {
            startOrEnd(isEnd, CueSpan::underline, name);
        } else if (name == "s" && rest.empty()) {
            startOrEnd(isEnd, CueSpan::strikeThrough, name);
        } else if (name == "br" && !isEnd && !isInBraces) {
            openWanted();
            result_.text.text += u'\n';
        } else {
            return false;
        }
        line_ += static_cast<uint32_t>(std::ranges::count(inside, '\n'));
        return true;
    }

    // "\an8\i1" of "{\an8\i1}".
    void addOverrides(std::string_view inside) {
        forEachAssOverride(inside, [this](const AssOverride& override) {
            if (!addOverride(override))
                reader_.problems_.addOnce(CaptionProblem::notShown, line_,
                                          "{\\" + oneLine(override.kind) + "} has no effect");
        });
    }

    void reportText(std::string_view tag) {
        reader_.problems_.addOnce(CaptionProblem::malformed, line_,
                                  quotedExcerpt(tag) + " is not a tag and is shown as text");
    }

    SubRipText finish() {
        for (const Tag& tag : open_) {
            if (tag.isOverride) continue;
            report(tag.line, "<" + tag.name + "> is not closed and applies to the end of the cue");
        }
        open_.clear();
        closeUnwanted();
        return std::move(result_);
    }

private:
    struct Tag {
        CueSpan::Kind kind;
        std::string name;
        // The colour inside it; may be empty.
        std::string colour;
        uint32_t line;
        // Overrides are closed only by other overrides.
        bool isOverride = false;
    };

    void report(uint32_t line, std::string message) {
        reader_.problems_.add(CaptionProblem::malformed, line, std::move(message));
    }

    bool addOverride(const AssOverride& override) {
        const auto& [text, kind, value] = override;
        constexpr std::pair<std::string_view, CueSpan::Kind> kTraits[] = {
            {"b", CueSpan::bold}, {"i", CueSpan::italic}, {"u", CueSpan::underline}, {"s", CueSpan::strikeThrough}};
        for (const auto& [name, trait] : kTraits) {
            if (kind != name) continue;
            endOverrides(trait);
            if (value == "1") startOverride(trait, {});
            return value == "1" || value == "0" || value.empty();
        }
        if (kind == "c" || kind == "1c") {
            endOverrides(CueSpan::colour);
            const auto colour = parsedAssColour(value);
            if (colour) startOverride(CueSpan::colour, nameOfColour(*colour));
            return colour || value.empty();
        }
        if (kind == "an" || kind == "a") {
            const std::optional<int> place = padPlace(text);
            if (place && result_.placement.isEmpty()) result_.placement = placementOfPad(*place);
            return place.has_value();
        }
        if (text != "r") return false;
        std::erase_if(open_, &Tag::isOverride);
        return true;
    }

    void startOverride(CueSpan::Kind kind, std::string colour) {
        start(kind, {}, std::move(colour));
        open_.back().isOverride = true;
    }

    void endOverrides(CueSpan::Kind kind) {
        std::erase_if(open_, [kind](const Tag& tag) { return tag.isOverride && tag.kind == kind; });
    }

    std::string colourOf(std::string_view attributes) {
        std::string colour = wantedColour();
        while (!trimmed(attributes, kSpace).empty()) {
            const Attribute attribute = takeAttribute(attributes);
            if (attribute.name == "color" && !attribute.value.empty())
                colour = attribute.value;
            else
                reader_.problems_.addOnce(CaptionProblem::notShown, line_,
                                          "the " + quotedExcerpt(attribute.name) + " of <font> is ignored");
        }
        return colour;
    }

    std::string wantedColour() const {
        const auto found = std::ranges::find(open_.rbegin(), open_.rend(), CueSpan::colour, &Tag::kind);
        return found == open_.rend() ? std::string() : found->colour;
    }

    void start(CueSpan::Kind kind, std::string name, std::string colour) {
        open_.push_back({kind, std::move(name), std::move(colour), line_});
    }

    void end(CueSpan::Kind kind, const std::string& name) {
        const auto found = std::ranges::find_if(open_.rbegin(), open_.rend(),
                                                [kind](const Tag& tag) { return tag.kind == kind && !tag.isOverride; });
        if (found == open_.rend())
            report(line_, "</" + name + "> closes nothing and is ignored");
        else
            open_.erase(std::next(found).base());
    }

    void startOrEnd(bool isEnd, CueSpan::Kind kind, const std::string& name) {
        if (isEnd)
            end(kind, name);
        else
            start(kind, name, {});
    }

    // The open tags' request for a kind; for colours only the innermost, so that they never overlap.
    std::optional<std::string> wanted(CueSpan::Kind kind) const {
        if (kind == CueSpan::colour) {
            std::string colour = wantedColour();
            return colour.empty() ? std::nullopt : std::optional(std::move(colour));
        }
        return std::ranges::find(open_, kind, &Tag::kind) == open_.end() ? std::nullopt
                                                                         : std::optional<std::string>("");
    }

    void closeUnwanted() {
        const auto position = static_cast<uint32_t>(result_.text.text.size());
        std::erase_if(current_, [&](size_t index) {
            CueSpan& span = result_.text.spans[index];
            span.range.length = position - span.range.location;
            return wanted(span.kind) != span.name;
        });
    }

    // Spans begin with their text, so tags around nothing make no span.
    void openWanted() {
        closeUnwanted();
        for (const Tag& tag : open_) {
            const std::optional<std::string> name = wanted(tag.kind);
            const bool isOpen =
                std::ranges::any_of(current_, [&](size_t index) { return result_.text.spans[index].kind == tag.kind; });
            if (!name || isOpen) continue;
            current_.push_back(result_.text.spans.size());
            result_.text.spans.push_back(
                {tag.kind, *name, {static_cast<uint32_t>(result_.text.text.size()), 0}, tag.line});
        }
    }

    SubRipTextReader& reader_;
    SubRipText result_;
    std::vector<Tag> open_;
    // Indices of the result's spans that continue.
    std::vector<size_t> current_;
    uint32_t line_;
};

SubRipText SubRipTextReader::read(std::string_view payload, uint32_t firstLine) {
    Builder builder(*this, firstLine);
    while (!payload.empty()) {
        const size_t begin = std::min(payload.find_first_of("<{"), payload.size());
        builder.addText(payload.substr(0, begin));
        payload.remove_prefix(begin);
        if (payload.empty()) break;
        const bool isInBraces = payload.front() == '{';
        const size_t end = payload.substr(0, kTagBytesMax).find(isInBraces ? '}' : '>');
        if (end == std::string_view::npos) {
            builder.addText(payload.substr(0, 1));
            payload.remove_prefix(1);
            continue;
        }
        const std::string_view inside = payload.substr(1, end - 1);
        const size_t nameBegin = inside.starts_with('/') ? 1 : 0;
        const bool looksLikeTag =
            nameBegin < inside.size() && lowered(inside[nameBegin]) >= 'a' && lowered(inside[nameBegin]) <= 'z';
        if (isInBraces && inside.starts_with('\\')) {
            builder.addOverrides(inside);
        } else if (!looksLikeTag || !builder.addTag(inside, isInBraces)) {
            if (looksLikeTag && !isInBraces) builder.reportText(payload.substr(0, end + 1));
            builder.addText(payload.substr(0, 1));
            payload.remove_prefix(1);
            continue;
        }
        payload.remove_prefix(end + 1);
    }
    return builder.finish();
}

}  // namespace qz
