#include "captions/CueTextWriter.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "QzAnno/platform/foundation/Limits.h"
#include "captions/CueAnnotator.h"
#include "captions/CueText.h"
#include "captions/KeyExchange.h"

namespace qz {
namespace {

// A line with only this reads as an empty line, which a payload cannot contain.
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
                // Unescaped it would be a line end.
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
    // A blank prevents a name that ends in "--" from making an arrow.
    std::string start() const { return "<" + inside() + (name.ends_with("--") ? " >" : ">"); }
    std::string end() const {
        const std::string words = inside();
        return "</" + words.substr(0, words.find_first_of(". ")) + ">";
    }
    CueSpan span() const { return {kind, name, {}, 0}; }
    friend bool operator==(const Tag&, const Tag&) = default;
};

bool isClass(std::string_view name) {
    constexpr std::string_view kEnds(".> \t\f\n\r\0", 8);
    return !name.empty() && name.find_first_of(kEnds) == std::string_view::npos;
}

// Classes cannot contain blanks.
std::string joined(std::string name) {
    std::ranges::replace(name, ' ', '_');
    return name;
}

// Runs of blanks in a voice are read as one blank, and those at its ends are dropped.
bool isVoice(std::string_view name) {
    constexpr std::string_view kOthers("\t\f\n\r\0", 5);
    return !name.empty() && !name.starts_with(' ') && !name.ends_with(' ') &&
           name.find("  ") == std::string_view::npos && name.find_first_of(kOthers) == std::string_view::npos;
}

class Writer {
public:
    Writer(const QzAnnoString& text, const CueText& former, const QzAnnoPalette& palette)
        : palette_(palette), annotator_({palette, &others_}, problems_), former_(former) {
        text_ = withKeys(text, [&](const Ref<QzAnnoKey>& key) -> Ref<QzAnnoKey> {
            if (isOfPalette(key)) return key;
            return key->isDefault() ? nullptr : others_.keyNamed(formerSpelling(text, key->name()->utf8()));
        });
    }

    bool isSaidByFormer() { return annotator_.annotated(former_)->isEqualToAnnoString(*text_); }

    WrittenCueText write() {
        for (const CueSpan& span : former_.spans) {
            if (span.kind == CueSpan::voice) adopt(span);
        }
        for (const QzAnnoString::Run& run : text_->runs()) {
            moveTo(run);
            writeText(run.range);
        }
        closeDownTo(0);
        if (text_->length() > 0) {
            fillEmptyLine();
            written_.lostTags.assign(former_.dropped.begin(), former_.dropped.end());
            for (const CueSpan& span : former_.spans) {
                if (span.range.length > 0 && annotator_.keysOf(span).empty())
                    written_.lostTags.push_back(Tag{span.kind, span.name}.inside());
            }
            findCovered();
        }
        return std::move(written_);
    }

private:
    struct Open {
        Ref<QzAnnoKey> key;
        const Tag* tag;
        uint32_t end;
    };

    bool isOfPalette(const Ref<QzAnnoKey>& key) const { return palette_.contains(key); }

    // A name that a former palette matched to a class with "_" for blanks is written as before.
    std::string formerSpelling(const QzAnnoString& text, const std::string& name) const {
        const std::string spelling = joined(name);
        const auto isFormer = [&](const CueSpan& span) {
            return span.kind == CueSpan::styleClass && span.name == spelling;
        };
        const auto isOther = [&](const Ref<QzAnnoKey>& key) { return key->name()->utf8() == spelling; };
        return std::ranges::any_of(former_.spans, isFormer) &&
                       std::ranges::none_of(text.allKeys()->objects<QzAnnoKey>(), isOther)
                   ? spelling
                   : name;
    }

    // The speaker's key is written as a voice, unless another voice has it.
    void adopt(const CueSpan& voice) {
        const auto& keys = annotator_.keysOf(voice);
        if (!keys.empty() && adds(voice, keys.back())) tags_.try_emplace(keys.back(), Tag{voice.kind, voice.name});
    }

    void moveTo(const QzAnnoString::Run& run) {
        const uint32_t here = run.range.location;
        const auto ended = std::ranges::find_if(open_, [here](const Open& each) { return each.end <= here; });
        // Tags nest, so close those opened later too, and reopen those that continue.
        closeDownTo(static_cast<size_t>(ended - open_.begin()));
        std::set<Ref<QzAnnoKey>> implied;
        for (const Ref<QzAnnoKey>& key : run.keys->objects<QzAnnoKey>()) {
            const Tag* tag = tagOf(key);
            if (!tag) continue;
            for (const Ref<QzAnnoKey>& each : annotator_.keysOf(tag->span())) {
                if (each != key) implied.insert(each);
            }
        }
        std::vector<Open> begun;
        for (const Ref<QzAnnoKey>& key : run.keys->objects<QzAnnoKey>()) {
            if (implied.contains(key) || std::ranges::find(open_, key, &Open::key) != open_.end()) continue;
            Range range;
            const Tag* tag = tagOf(key);
            if (tag && text_->annotation(key, here, &range))
                begun.push_back({key, tag, static_cast<uint32_t>(range.end())});
        }
        std::ranges::stable_sort(begun, std::ranges::greater(), &Open::end);
        for (Open& each : begun) {
            written_.payload += each.tag->start();
            open_.push_back(std::move(each));
        }
    }

    // Finds annotations that will not be read back.
    void findCovered() {
        const auto read = annotator_.annotated(parseCueText(written_.payload, 1));
        if (read->length() != text_->length()) return;
        std::set<std::string> names;
        for (const QzAnnoString::Run& run : text_->runs()) {
            for (const Ref<QzAnnoKey>& key : run.keys->objects<QzAnnoKey>()) {
                const Tag* tag = tagOf(key);
                Range range;
                const bool isRead =
                    !tag || (read->annotation(annotator_.keysOf(tag->span()).back(), run.range.location, &range) &&
                             range.end() >= run.range.end());
                if (!isRead) names.insert(key->name()->utf8());
            }
        }
        written_.covered.assign(names.begin(), names.end());
    }

    void closeDownTo(size_t count) {
        while (open_.size() > count) {
            written_.payload += open_.back().tag->end();
            open_.pop_back();
        }
    }

    void writeText(Range range) {
        std::string& payload = written_.payload;
        const std::u16string_view characters = text_->string()->characters();
        std::string rest = escaped(utf8FromUtf16(characters.substr(range.location, range.length)));
        for (size_t begin = 0;;) {
            const size_t lineEnd = rest.find('\n', begin);
            payload.append(rest, begin, lineEnd - begin);
            if (lineEnd == std::string::npos) return;
            fillEmptyLine();
            payload += '\n';
            begin = lineEnd + 1;
        }
    }

    void fillEmptyLine() {
        std::string& payload = written_.payload;
        if (payload.empty() || payload.back() == '\n') payload += kEmptyLine;
    }

    // Returns null, after reporting it, for an annotation that no tag can name.
    const Tag* tagOf(const Ref<QzAnnoKey>& key) {
        const auto [known, isNew] = tags_.try_emplace(key);
        std::optional<Tag>& tag = known->second;
        if (isNew) {
            const std::string name = key->name()->utf8();
            const std::vector<Tag> forms = formsOf(name);
            auto form = std::ranges::find_if(forms, [&](const Tag& each) { return adds(each.span(), key); });
            if (form == forms.end()) {
                form = std::ranges::find_if(forms, [&](const Tag& each) { return addsNamed(each.span(), *key); });
                (form == forms.end() ? written_.unnamed : written_.mistaken).push_back(name);
            }
            if (form != forms.end()) tag = *form;
        }
        return tag ? &*tag : nullptr;
    }

    // The tags that may name the annotation, the best first.
    std::vector<Tag> formsOf(const std::string& name) const {
        std::vector<Tag> forms;
        if (name == "b") forms.push_back({CueSpan::bold, {}});
        if (name == "i") forms.push_back({CueSpan::italic, {}});
        if (name == "u") forms.push_back({CueSpan::underline, {}});
        constexpr std::string_view kLanguage = "lang ";
        if (name.starts_with(kLanguage)) {
            const std::string language = name.substr(kLanguage.size());
            if (language.empty() || isVoice(language)) forms.push_back({CueSpan::language, language});
        }
        for (const std::string& each : {name, joined(name)}) {
            if (isClass(each)) forms.push_back({CueSpan::styleClass, each});
        }
        if (isVoice(name)) forms.push_back({CueSpan::voice, name});
        return forms;
    }

    // Whether the span, applied wherever the key holds, adds only the key.
    bool adds(const CueSpan& span, const Ref<QzAnnoKey>& key) {
        const auto& keys = annotator_.keysOf(span);
        if (std::ranges::find(keys, key) == keys.end()) return isSpelling(span, key);
        return std::ranges::all_of(text_->runs(), [&](const auto& run) {
            return !run.keys->containsObject(*key) ||
                   std::ranges::all_of(keys, [&](const auto& each) { return run.keys->containsObject(*each); });
        });
    }

    // Blanks in a name missing from the palette may be read back as "_", unless the text uses that name too.
    bool isSpelling(const CueSpan& span, const Ref<QzAnnoKey>& key) {
        const Ref<QzAnnoKey> spelled = others_.keyNamed(span.name);
        return span.kind == CueSpan::styleClass && !isOfPalette(key) && !text_->bitsFor(spelled) &&
               key->name()->utf8().find('_') == std::string::npos && annotator_.keysOf(span) == std::vector{spelled};
    }

    bool addsNamed(const CueSpan& span, const QzAnnoKey& key) {
        const auto& keys = annotator_.keysOf(span);
        return keys.size() == 1 && keys[0]->name()->isEqualToString(*key.name());
    }

    const QzAnnoPalette& palette_;
    LooseKeys others_;
    CaptionProblems problems_;
    CueAnnotator annotator_;
    const CueText& former_;
    // Has one key for each name missing from the palette.
    Ref<QzAnnoString> text_;
    // No value if no tag can name it.
    std::map<Ref<QzAnnoKey>, std::optional<Tag>> tags_;
    // Innermost last.
    std::vector<Open> open_;
    WrittenCueText written_;
};

}  // namespace

std::optional<WrittenCueText> writeCueText(const QzAnnoString& text, const QzAnnoPalette& palette,
                                           std::string_view former, std::string& reason) {
    const CueText formerText = parseCueText(former, 1);
    Writer writer(text, formerText, palette);
    if (writer.isSaidByFormer()) return WrittenCueText{std::string(former), {}, {}, {}, {}};
    WrittenCueText written = writer.write();
    if (written.payload.size() > Limits::kTitleUnitsMax) {
        reason = "with its markup the title has " + std::to_string(written.payload.size()) + " characters; " +
                 std::to_string(Limits::kTitleUnitsMax) + " is the limit";
        return {};
    }
    if (parseCueText(written.payload, 1).text != text.string()->characters()) {
        reason = "captions cannot hold the character U+0000 or a lone surrogate; delete it";
        return {};
    }
    return written;
}

}  // namespace qz
