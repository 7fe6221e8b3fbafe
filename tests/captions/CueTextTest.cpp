#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSString.h"
#include "captions/CueText.h"

namespace qz {
namespace {

// "b:0-3 .One:1-2 v(Mary):0-5": every span as its tag, with an exclusive end.
std::string spansOf(const CueText& cue) {
    static constexpr const char* tags[] = {".", "r.", "b", "i", "u", "s", "v", "colour", "lang"};
    std::string text;
    for (const auto& [kind, name, range, line] : cue.spans) {
        if (!text.empty()) text += ' ';
        text += tags[kind];
        text += kind == CueSpan::styleClass || name.empty() ? name : "(" + name + ")";
        text += ":" + std::to_string(range.location) + "-" + std::to_string(range.end());
    }
    return text;
}

TEST(CueText, TextAndSpans) {
    const struct {
        const char* payload;
        const char* text;
        const char* spans;
        const char* reason;
    } cases[] = {
        {"plain", "plain", "", "no tags"},
        {"one\ntwo", "one\ntwo", "", "lines stay lines"},
        {"a<c.One>bc</c>d", "abcd", ".One:1-3", "a class"},
        {"<c.One.Two>ab</c>", "ab", ".One:0-2 .Two:0-2", "several classes"},
        {"<c.One>a<c.Two>b</c>c</c>", "abc", ".One:0-3 .Two:1-2", "nested classes"},
        {"<b.Loud>a<i>b</i></b><u>c</u>", "abc", ".Loud:0-2 b:0-2 i:1-2 u:2-3", "a class on any tag"},
        {"<b>a<b>b</b>c</b>d", "abcd", "b:0-3", "a tag inside its like changes nothing"},
        {"<c.A>a<b.A>b</b>c</c>d", "abcd", ".A:0-3 b:1-2", "the class is open twice"},
        {"<c.A.A>a</c>b", "ab", ".A:0-1", "the class twice in one tag"},
        {"<b>a</b><b>b</b>", "ab", "b:0-1 b:1-2", "one after the other"},
        {"<v Mary>Hi</v> <v.loud Tom  Lee>Ho", "Hi Ho", "v(Mary):0-2 .loud:3-5 v(Tom Lee):3-5",
         "voices; blanks collapse"},
        {"<v\tA &amp; B>x", "x", "v(A & B):0-1", "references in a name"},
        {"<v\nMary\n>x", "x", "v(Mary):0-1", "a tag over several lines"},
        {"<lang en-GB.x>a</lang>", "a", "lang(en-GB.x):0-1", "a language; a point behind the blank is no class"},
        {"<ruby>base<rt>over</rt></ruby>", "baseover", "", "ruby stays text"},
        {"<ruby.R>a<rt.T>b</ruby>c", "abc", ".R:0-2 .T:1-2", "the ruby's end closes its text too"},
        {"<rt.T>a</rt>", "a", "", "ruby text outside ruby is no tag"},
        {"a<00:00:01.000>b", "ab", "", "time stamps are dropped"},
        {"<b><i>a</b>b</i>c", "abc", "b:0-3 i:0-2", "an end that is not the innermost's closes nothing"},
        {"a</b>b", "ab", "", "an end of nothing"},
        {"<x.One>a</x><>b</>", "ab", "", "unknown and empty tags"},
        {"<.One>a", "a", "", "a class without a tag"},
        {"<c..One.>a", "a", ".One:0-1", "empty classes"},
        {"<B>a", "a", "", "names are matched exactly"},
        {"<b>a", "a", "b:0-1", "open to the end"},
        {"a<b", "a", "b:1-1", "cut off inside a tag"},
        {"a<", "a", "", "cut off behind the bracket"},
        {"a > b", "a > b", "", "a bracket that closes nothing"},
        {"<b></b>", "", "b:0-0", "a span over nothing"},
        {"&lt;b&gt; &amp;amp; &nbsp;&lrm;&rlm;&quot;", "<b> &amp; \u00A0\u200E\u200F\"", "", "named references"},
        {"&#65;&#x42;&#X1f600;&#0;&#xD800;&#99999999999;", "AB😀\uFFFD\uFFFD\uFFFD", "", "numbers"},
        {"&#146;&#129;", "\u2019\u0081", "", "numbers of Windows' characters"},
        {"&amp &lt&#65x &ampere", "& <Ax &ere", "", "HTML lets the semicolon go"},
        {"&lrm &who; &; && &# &#x;", "&lrm &who; &; && &# &#x;", "", "no references"},
        {"&eacute;&hellip;&mdash;&not;in&notin;&NotEqualTilde;&AMP", "é…—¬in∉≂\u0338&", "",
         "names of HTML, the longest first"},
        {"😀<i>😀</i>é", "😀😀é", "i:2-4", "positions in UTF-16"},
    };
    for (const auto& [payload, text, spans, reason] : cases) {
        const CueText cue = parseCueText(payload, 1);
        EXPECT_EQ(utf8FromUtf16(cue.text), text) << reason;
        EXPECT_EQ(spansOf(cue), spans) << reason;
    }
    EXPECT_EQ(parseCueText(std::string_view("a\0b", 3), 1).text, u"a\uFFFDb");
}

TEST(CueText, WhatIsDroppedIsToldOnceAKindWhereItFirstStands) {
    CaptionProblems problems;
    parseCueText(
        "<00:01.000>a<00:02.000>\n<ruby>b<rt>c</ruby>\n<font color=red>d</font>\n<b><i>e</b></i></b>\n</u><rt>", 5,
        &problems);
    parseCueText("<00:01.000><ruby><font></u>", 20, &problems);
    std::string told;
    for (const CaptionProblem& problem : problems.take())
        told += std::to_string(problem.line) + (problem.isLoss() ? "! " : ": ") + problem.message.substr(0, 12) + "|";
    EXPECT_EQ(
        told,
        "5! the times wi|6! <ruby> is se|7! \"<font>\" is |8: \"</b>\" stand|9: \"</u>\" close|9! \"<rt>\" is no|");
}

// Reads the payload character by character and writes down, at each, which tags are open: b, i, A for the class, c for
// others.
struct SlowModel {
    explicit SlowModel(std::string_view payload) {
        std::string nodes;
        for (size_t i = 0; i < payload.size(); ++i) {
            if (payload[i] != '<') {
                text += payload[i];
                open.push_back(nodes);
                continue;
            }
            std::string tag;
            while (++i < payload.size() && payload[i] != '>') tag += payload[i];
            const char innermost = nodes.empty() ? ' ' : nodes.back();
            if (tag == "b" || tag == "i")
                nodes += tag;
            else if (tag.starts_with("c."))
                nodes += tag == "c.A" ? 'A' : 'c';
            else if (tag == "/c" ? innermost == 'A' || innermost == 'c' : tag == std::string("/") + innermost)
                nodes.pop_back();
        }
    }
    std::string text;
    std::vector<std::string> open;
};

TEST(CueText, RandomTagsAgreeWithASlowModel) {
    const uint32_t seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    static constexpr const char* pieces[] = {"<b>", "<i>", "<c.A>", "</b>", "</i>", "</c>", "x", "yz", "</u>", "<i"};
    for (int round = 0; round < 3000; ++round) {
        std::string payload;
        for (auto length = random() % 20; length > 0; --length) payload += pieces[random() % std::size(pieces)];
        const CueText cue = parseCueText(payload, 1);
        const SlowModel model(payload);
        ASSERT_EQ(utf8FromUtf16(cue.text), model.text) << payload;
        for (uint32_t i = 0; i < cue.text.size(); ++i) {
            const auto isCovered = [&](CueSpan::Kind kind, const char* name) {
                return std::ranges::any_of(cue.spans, [&](const CueSpan& span) {
                    return span.kind == kind && span.name == name && span.range.contains(i);
                });
            };
            const std::string& open = model.open[i];
            ASSERT_EQ(isCovered(CueSpan::bold, ""), open.find('b') != std::string::npos) << payload << " at " << i;
            ASSERT_EQ(isCovered(CueSpan::italic, ""), open.find('i') != std::string::npos) << payload << " at " << i;
            ASSERT_EQ(isCovered(CueSpan::styleClass, "A"), open.find('A') != std::string::npos)
                << payload << " at " << i;
        }
    }
}

}  // namespace
}  // namespace qz
