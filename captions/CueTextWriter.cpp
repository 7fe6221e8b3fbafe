#include "captions/CueTextWriter.h"

#include <algorithm>
#include <map>
#include <utility>

#include "captions/CueAnnotator.h"
#include "captions/CueText.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/Limits.h"

namespace qz {
namespace {

// A line of this alone reads as an empty one, which a payload cannot hold.
constexpr std::string_view kEmptyLine = "<c></c>";

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '\r':
                // As it stands it would be a line end.
                result += "&#13;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

struct Tag {
    CueSpan::Kind kind;
    std::string name;

    std::string inside() const {
        switch (kind) {
            case CueSpan::bold:
                return "b";
            case CueSpan::italic:
                return "i";
            case CueSpan::underline:
                return "u";
            case CueSpan::voice:
                return "v " + escaped(name);
            case CueSpan::language:
                return "lang " + escaped(name);
            default:
                return "c." + name;
        }
    }
    // A blank keeps a name that ends in "--" from making an arrow.
    std::string start() const { return "<" + inside() + (name.ends_with("--") ? " >" : ">"); }
    std::string end() const { return std::string("</") + inside().front() + ">"; }
    CueSpan span() const { return {kind, name, {}, 0}; }
    friend bool operator==(const Tag&, const Tag&) = default;
};

bool isClass(std::string_view name) {
    constexpr std::string_view kEnds(".> \t\f\n\r\0", 8);
    return !name.empty() && name.find_first_of(kEnds) == std::string_view::npos;
}

// Runs of blanks in a voice are read as one, and those at its ends not at all.
bool isVoice(std::string_view name) {
    constexpr std::string_view kOthers("\t\f\n\r\0", 5);
    return !name.empty() && !name.starts_with(' ') && !name.ends_with(' ') &&
           name.find("  ") == std::string_view::npos && name.find_first_of(kOthers) == std::string_view::npos;
}

class Writer {
public:
    Writer(const QzAnnoString& text, const QzAnnoPalette& palette) : text_(text), palette_(palette) {}

    // The key is written with the tag wherever it holds, unless another tag is already.
    void adopt(const CueSpan& span) {
        const Ref<QzAnnoKey> key = CueAnnotator::find(span, palette_);
        if (key && span.kind == CueSpan::voice) tags_.try_emplace(key, Tag{span.kind, span.name});
    }

    bool write(std::string& reason) {
        for (const QzAnnoString::Run& run : text_.runs()) {
            if (!moveTo(run, reason)) return false;
            writeText(run.range);
        }
        closeDownTo(0);
        if (text_.length() > 0) fillEmptyLine();
        return true;
    }

    bool isWritten(const CueSpan& span) const {
        const Ref<QzAnnoKey> key = CueAnnotator::find(span, palette_);
        if (!key) return false;
        const auto tag = tags_.find(key);
        // Voices have a meaning beyond that of their annotation.
        return span.kind != CueSpan::voice || tag == tags_.end() || tag->second == Tag{span.kind, span.name};
    }

    std::string take() { return std::move(payload_); }

private:
    struct Open {
        Ref<QzAnnoKey> key;
        const Tag* tag;
        uint32_t end;
    };

    bool moveTo(const QzAnnoString::Run& run, std::string& reason) {
        const uint32_t here = run.range.location;
        const auto ended = std::ranges::find_if(open_, [here](const Open& each) { return each.end <= here; });
        // Tags nest, so those that were opened later end too, and begin anew where they go on.
        closeDownTo(static_cast<size_t>(ended - open_.begin()));
        std::vector<Open> begun;
        for (const Ref<QzAnnoKey>& key : run.keys->objects<QzAnnoKey>()) {
            if (key->isDefault() || std::ranges::find(open_, key, &Open::key) != open_.end()) continue;
            const Tag* tag = tagOf(key, reason);
            Range range;
            if (!tag || !text_.annotation(key, here, &range)) return false;
            begun.push_back({key, tag, static_cast<uint32_t>(range.end())});
        }
        std::ranges::stable_sort(begun, std::ranges::greater(), &Open::end);
        for (Open& each : begun) {
            payload_ += each.tag->start();
            open_.push_back(std::move(each));
        }
        return true;
    }

    void closeDownTo(size_t count) {
        while (open_.size() > count) {
            payload_ += open_.back().tag->end();
            open_.pop_back();
        }
    }

    void writeText(Range range) {
        const std::u16string_view characters = text_.string()->characters();
        std::string rest = escaped(utf8FromUtf16(characters.substr(range.location, range.length)));
        for (size_t begin = 0;;) {
            const size_t lineEnd = rest.find('\n', begin);
            payload_.append(rest, begin, lineEnd - begin);
            if (lineEnd == std::string::npos) return;
            fillEmptyLine();
            payload_ += '\n';
            begin = lineEnd + 1;
        }
    }

    void fillEmptyLine() {
        if (payload_.empty() || payload_.back() == '\n') payload_ += kEmptyLine;
    }

    const Tag* tagOf(const Ref<QzAnnoKey>& key, std::string& reason) {
        const auto known = tags_.find(key);
        if (known != tags_.end()) return &known->second;
        const std::string name = key->name()->utf8();
        std::string joined = name;
        std::ranges::replace(joined, ' ', '_');
        std::vector<Tag> forms;
        if (name == "b") forms.push_back({CueSpan::bold, {}});
        if (name == "i") forms.push_back({CueSpan::italic, {}});
        if (name == "u") forms.push_back({CueSpan::underline, {}});
        for (const std::string& each : {name, joined}) {
            if (isClass(each)) forms.push_back({CueSpan::styleClass, each});
        }
        if (isVoice(name)) forms.push_back({CueSpan::voice, name});
        const auto form = std::ranges::find_if(forms, [&](const Tag& tag) { return means(tag, key); });
        if (form != forms.end()) return &tags_.emplace(key, *form).first->second;
        reason = "the annotation " + quotedExcerpt(name) +
                 " cannot be named in captions; give it a name of its own, without line ends, tabs and double blanks";
        return nullptr;
    }

    bool means(const Tag& tag, const Ref<QzAnnoKey>& key) const {
        const Ref<QzAnnoKey> found = CueAnnotator::find(tag.span(), palette_);
        // A palette that has lost the annotation may have another one of the name by now.
        if (!palette_.contains(key)) return !found || found->name()->isEqualToString(*key->name());
        return found == key;
    }

    const QzAnnoString& text_;
    const QzAnnoPalette& palette_;
    std::map<Ref<QzAnnoKey>, Tag> tags_;
    // Innermost last.
    std::vector<Open> open_;
    std::string payload_;
};

}  // namespace

std::optional<WrittenCueText> writeCueText(const QzAnnoString& text, const QzAnnoPalette& palette,
                                           std::string_view former, std::string& reason) {
    const CueText formerText = parseCueText(former, 1);
    CaptionProblems known;
    if (CueAnnotator(palette, known).annotated(formerText)->isEqualToAnnoString(text)) {
        return WrittenCueText{std::string(former), {}};
    }
    Writer writer(text, palette);
    for (const CueSpan& span : formerText.spans) writer.adopt(span);
    if (!writer.write(reason)) return {};
    WrittenCueText written{writer.take(), {formerText.dropped.begin(), formerText.dropped.end()}};
    if (written.payload.size() > Limits::kTitleUnitsMax) {
        reason = "with its markup the title has " + std::to_string(written.payload.size()) + " characters; " +
                 std::to_string(Limits::kTitleUnitsMax) + " are the most";
        return {};
    }
    if (parseCueText(written.payload, 1).text != text.string()->characters()) {
        reason = "captions cannot hold the character U+0000 or half of one that takes two units; delete it";
        return {};
    }
    for (const CueSpan& span : formerText.spans) {
        if (!writer.isWritten(span)) written.lost.push_back(Tag{span.kind, span.name}.inside());
    }
    return written;
}

}  // namespace qz
