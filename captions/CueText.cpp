#include "captions/CueText.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "QzAnno/platform/foundation/NSString.h"
#include "captions/CharacterReference.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

enum class Tag { c, i, b, u, ruby, rt, v, lang };

std::optional<Tag> tagOf(std::string_view name) {
    static constexpr std::pair<std::string_view, Tag> tags[] = {{"c", Tag::c}, {"i", Tag::i},       {"b", Tag::b},
                                                                {"u", Tag::u}, {"ruby", Tag::ruby}, {"rt", Tag::rt},
                                                                {"v", Tag::v}, {"lang", Tag::lang}};
    const auto* found = std::ranges::find(tags, name, &std::pair<std::string_view, Tag>::first);
    return found == std::end(tags) ? std::nullopt : std::optional(found->second);
}

constexpr std::string_view kSpace = " \t\f\n";

bool isSpace(char c) {
    return kSpace.find(c) != std::string_view::npos;
}

std::string withReferencesResolved(std::string_view text) {
    std::string resolved;
    while (!text.empty()) {
        if (text.front() == '&') {
            const CharacterReference reference = characterReferenceAt(text);
            resolved += reference.length > 0 ? reference.utf8 : "&";
            text.remove_prefix(std::max<size_t>(reference.length, 1));
        }
        const size_t end = std::min(text.find('&'), text.size());
        resolved += text.substr(0, end);
        text.remove_prefix(end);
    }
    return resolved;
}

// The words of a text separated by single blanks.
std::string withSpaceCollapsed(std::string_view text) {
    std::string words;
    for (const char c : text) {
        if (!isSpace(c))
            words += c;
        else if (!words.empty() && words.back() != ' ')
            words += ' ';
    }
    if (words.ends_with(' ')) words.pop_back();
    return words;
}

// "c.One.Two Speaker" between its brackets.
struct StartTag {
    std::string_view name;
    std::vector<std::string_view> classes;
    std::string annotation;
};

StartTag parseStartTag(std::string_view inside) {
    StartTag tag;
    const size_t wordsEnd = std::min(inside.find_first_of(kSpace), inside.size());
    tag.annotation = withSpaceCollapsed(withReferencesResolved(inside.substr(wordsEnd)));
    std::string_view words = inside.substr(0, wordsEnd);
    const size_t nameEnd = std::min(words.find('.'), words.size());
    tag.name = words.substr(0, nameEnd);
    words.remove_prefix(nameEnd);
    while (!words.empty()) {
        words.remove_prefix(1);
        const size_t end = std::min(words.find('.'), words.size());
        if (end > 0) tag.classes.push_back(words.substr(0, end));
        words.remove_prefix(end);
    }
    return tag;
}

class Builder {
public:
    Builder(uint32_t line, CaptionProblems* problems) : line_(line), problems_(problems) {}

    void addText(std::string_view text) {
        result_.text += utf16FromUtf8(withReferencesResolved(text));
        line_ += static_cast<uint32_t>(std::ranges::count(text, '\n'));
    }

    void addTag(std::string_view inside) {
        if (inside.starts_with('/'))
            end(inside.substr(1));
        else if (inside.empty() || inside.front() < '0' || inside.front() > '9')
            start(parseStartTag(inside), inside);
        else
            drop(inside, "times inside cues are ignored; a cue is shown whole from its start", "time");
        line_ += static_cast<uint32_t>(std::ranges::count(inside, '\n'));
    }

    CueText finish() {
        while (!nodes_.empty()) closeInnermost();
        std::ranges::replace(result_.text, u'\0', u'\uFFFD');
        return std::move(result_);
    }

private:
    using SpanName = std::pair<CueSpan::Kind, std::string>;
    // The number of open tags for the same span, and that span's index in the result.
    struct OpenSpan {
        size_t tags = 0;
        size_t index = 0;
    };
    using OpenSpans = std::map<SpanName, OpenSpan>;
    struct Node {
        Tag tag;
        std::vector<OpenSpans::iterator> spans;
    };

    void report(CaptionProblem::Kind kind, const std::string& message, const std::string& matter) {
        if (problems_) problems_->addOnce(kind, line_, message, "tag " + matter);
    }

    void drop(std::string_view inside, const std::string& message, const std::string& matter) {
        if (!inside.empty()) result_.dropped.emplace(inside);
        report(CaptionProblem::notShown, message, matter);
    }

    void start(const StartTag& start, std::string_view inside) {
        const std::optional<Tag> tag = tagOf(start.name);
        const std::string name(start.name);
        if (!tag || (*tag == Tag::rt && !innermostIs(Tag::ruby)))
            return drop(inside,
                        quotedExcerpt("<" + name + ">") + (tag ? " is not a tag outside <ruby>" : " is not a tag") +
                            " and is dropped",
                        name);
        if (*tag == Tag::ruby || *tag == Tag::rt)
            drop(inside, "<ruby> is set in the line; the text of <rt> follows its base", "ruby");
        Node node{*tag, {}};
        for (const std::string_view each : start.classes) open(node, CueSpan::styleClass, std::string(each));
        if (*tag == Tag::b) open(node, CueSpan::bold, {});
        if (*tag == Tag::i) open(node, CueSpan::italic, {});
        if (*tag == Tag::u) open(node, CueSpan::underline, {});
        if (*tag == Tag::v) open(node, CueSpan::voice, start.annotation);
        if (*tag == Tag::lang) open(node, CueSpan::language, start.annotation);
        nodes_.push_back(std::move(node));
    }

    void end(std::string_view name) {
        const std::optional<Tag> tag = tagOf(name);
        // Closing a ruby also closes the ruby text in it.
        if (tag == Tag::ruby && innermostIs(Tag::rt)) closeInnermost();
        if (tag && innermostIs(*tag)) return closeInnermost();
        const bool isOpen = tag && std::ranges::find(nodes_, *tag, &Node::tag) != nodes_.end();
        // For unknown tags, the start tag has been reported.
        report(CaptionProblem::malformed,
               quotedExcerpt("</" + std::string(name) + ">") +
                   (isOpen ? " comes before the end of a tag inside it" : " closes nothing") + " and is ignored",
               tag ? "/" + std::string(name) : std::string(name));
    }

    bool innermostIs(Tag tag) const { return !nodes_.empty() && nodes_.back().tag == tag; }
    uint32_t position() const { return static_cast<uint32_t>(result_.text.size()); }

    void open(Node& node, CueSpan::Kind kind, std::string name) {
        const auto span = open_.try_emplace({kind, std::move(name)}).first;
        node.spans.push_back(span);
        if (span->second.tags++ > 0) return;
        span->second.index = result_.spans.size();
        result_.spans.push_back({kind, span->first.second, {position(), 0}, line_});
    }

    void closeInnermost() {
        for (const OpenSpans::iterator span : nodes_.back().spans) {
            if (--span->second.tags > 0) continue;
            Range& range = result_.spans[span->second.index].range;
            range.length = position() - range.location;
            open_.erase(span);
        }
        nodes_.pop_back();
    }

    CueText result_;
    std::vector<Node> nodes_;
    OpenSpans open_;
    uint32_t line_;
    CaptionProblems* const problems_;
};

}  // namespace

CueText parseCueText(std::string_view payload, uint32_t firstLine, CaptionProblems* problems) {
    Builder builder(firstLine, problems);
    while (!payload.empty()) {
        const size_t tag = std::min(payload.find('<'), payload.size());
        builder.addText(payload.substr(0, tag));
        payload.remove_prefix(tag);
        if (payload.empty()) break;
        // A tag cut off by the end of the payload still counts.
        const size_t end = std::min(payload.find('>'), payload.size());
        builder.addTag(payload.substr(1, end - 1));
        payload.remove_prefix(std::min(end + 1, payload.size()));
    }
    return builder.finish();
}

}  // namespace qz
