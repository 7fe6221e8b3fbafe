#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSString.h"
#include "captions/CueText.h"
#include "captions/WebVTT.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class WebVTTTest : public test::CaptionTest {
protected:
    WebVTTTest() : CaptionTest({"One", "Two", "Lower Third", "a_b", "a b", "b", "v", "Mary"}) {}

    std::optional<CaptionFile> read(std::string_view file) {
        return wholeCaptionFile(readWebVTT, *NSData::dataWithBytes(file), *palette_, &error_);
    }

    // The one cue of a file with this payload.
    CaptionCue cueOf(const std::string& payload) {
        std::optional<CaptionFile> file = read("WEBVTT\n\n00:01.000 --> 00:02.000\n" + payload);
        if (!file || file->cues.size() != 1) {
            ADD_FAILURE() << payload;
            return {};
        }
        problems_ = std::move(file->problems);
        return file->cues.front();
    }

    std::vector<CaptionProblem> problems_;
    CaptionProblem error_;
};

TEST_F(WebVTTTest, TagsBecomeAnnotations) {
    const struct {
        const char* payload;
        const char* names;
        const char* reason;
    } cases[] = {
        {"<c.One>a<c.Two>b</c></c>c", "One|One,Two|", "nested classes overlap"},
        {"<c.Lower_Third>a</c>", "Lower Third", "a line stands for a blank"},
        {"<c.a_b>a</c>", "a_b", "but the exact name goes first"},
        {"<c.one>a</c>", "", "names are matched exactly"},
        {"<b.One>a</b><i>b</i>", "One,b|", "i is not in the palette"},
        {"<v Mary>a<v Tom>b", "Mary|Mary,v", "a speaker's own annotation, or that of voices"},
        {"<c.GLOBALS>a</c>", "", "the global annotation holds anyway"},
        {"<b></b>a", "", "a span over nothing"},
    };
    for (const auto& [payload, names, reason] : cases) EXPECT_EQ(namesAt(*cueOf(payload).text), names) << reason;

    // A key without characters would count as one of the string's.
    EXPECT_EQ(cueOf("<b></b>a").text->allKeys()->count(), 0u);
    EXPECT_EQ(cueOf("<c.GLOBALS>a</c>").text->allKeys()->count(), 0u);
    EXPECT_TRUE(problems_.empty());
    // The palette's own key, not one of its name.
    EXPECT_TRUE(cueOf("<c.One>a").text->bitsFor(palette_->findAnnoKey("One"_ns)));
}

TEST_F(WebVTTTest, EachMissingNameIsReportedOnceWhereItFirstStands) {
    const auto file = read(
        "WEBVTT\n\n00:01.000 --> 00:02.000\na\n<c.Three>b</c> <i>i</i>\n\n"
        "00:02.000 --> 00:03.000\n<c.Three.Four>c <i>d <u>e\n");
    ASSERT_TRUE(file);
    EXPECT_THAT(linesOf(file->problems),
                ElementsAre("5: the class \"Three\" is ignored; the palette has no annotation of that name",
                            "5: <i> adds nothing; the palette has no annotation \"i\"",
                            "8: the class \"Four\" is ignored; the palette has no annotation of that name",
                            "8: <u> adds nothing; the palette has no annotation \"u\""));
    palette_->removeAnno(palette_->findAnnoKey("v"_ns));
    cueOf("<v Mary>a</v><v Tom>b</v><v>c");
    EXPECT_FALSE(problems_.at(0).isLoss()) << "nobody asked for a look";
    EXPECT_THAT(linesOf(problems_),
                ElementsAre(HasSubstr("the voice \"Tom\" adds nothing"), HasSubstr("has no annotation \"v\"")));
}

TEST_F(WebVTTTest, ReadsBlocks) {
    const auto file = read(
        "\xEF\xBB\xBFWEBVTT - a title\r\n"
        "X-TIMESTAMP-MAP=LOCAL:00:00:00.000,MPEGTS:0\r\n"
        "\r\n"
        "NOTE a comment\r\n"
        "of two lines\r\n"
        "\r\n"
        "STYLE\r\n"
        "::cue(b) { color: red }\r\n"
        "\r\n"
        "REGION\r\n"
        "id:fred\r\n"
        "\r\n"
        "intro\r\n"
        "00:00:01.500 --> 100:00:02.000 align:start  line:0\r\n"
        "first\r\n"
        "second\r\n"
        "\r\n"
        "\r\n"
        "00:03.000-->\t00:04.250\n"
        "\n"
        "59:59.999 --> 59:59.999\n"
        "x\n"
        "00:05.000 --> 00:06.000\n"
        "an arrow begins the next cue");
    ASSERT_TRUE(file);
    EXPECT_THAT(linesOf(file->problems),
                ElementsAre(HasSubstr("2: X-TIMESTAMP-MAP"), HasSubstr("7: style sheets"), HasSubstr("10: regions")));
    ASSERT_EQ(file->cues.size(), 4u);
    const CaptionCue& intro = file->cues[0];
    EXPECT_EQ(intro.identifier, "intro");
    EXPECT_EQ(intro.start, 1.5);
    EXPECT_EQ(intro.end, 360002.0);
    EXPECT_EQ(intro.settings, "align:start  line:0");
    EXPECT_EQ(intro.line, 14u);
    EXPECT_EQ(intro.text->string()->utf8(), "first\nsecond");
    EXPECT_EQ(file->cues[1].end, 4.25);
    EXPECT_EQ(file->cues[1].identifier, "");
    EXPECT_EQ(file->cues[1].text->length(), 0u);
    EXPECT_EQ(file->cues[2].text->string()->utf8(), "x");
    EXPECT_EQ(file->cues[3].line, 23u);
    EXPECT_EQ(file->cues[3].text->string()->utf8(), "an arrow begins the next cue");
}

TEST_F(WebVTTTest, BeginsWithItsName) {
    for (const char* file : {"WEBVTT", "WEBVTT\n", "WEBVTT x", "WEBVTT\t", "\xEF\xBB\xBFWEBVTT\n\n", "WEBVTT\r\r"}) {
        const auto found = read(file);
        ASSERT_TRUE(found) << file;
        EXPECT_TRUE(found->cues.empty() && found->problems.empty()) << file;
    }
    EXPECT_EQ(read("WEBVTT\n00:01.000 --> 00:02.000\na")->cues.size(), 1u) << "no blank line below";
    for (const char* file : {"", "\nWEBVTT", "WEBVTTx", "webvtt", "1\n00:00:01,000 --> 00:00:02,000\na"}) {
        EXPECT_FALSE(read(file)) << file;
        EXPECT_THAT(error_.message, HasSubstr("does not begin with \"WEBVTT\"")) << file;
    }
    const auto damaged = read("\xEF\xBB\xBFWEBVTT\n\n00:01.000 --> 00:02.000\n\xE9t\xE9");
    ASSERT_TRUE(damaged);
    EXPECT_EQ(damaged->cues[0].text->string()->utf8(), "\uFFFDt\uFFFD");
    EXPECT_THAT(linesOf(damaged->problems), ElementsAre(HasSubstr("4: byte 35")));
    EXPECT_TRUE(damaged->problems[0].isLoss());
    EXPECT_FALSE(read(std::string("W\0E\0", 4)));
    EXPECT_THAT(error_.message, HasSubstr("UTF-16"));
}

TEST_F(WebVTTTest, BrokenTimeLinesLoseTheirCueOnly) {
    const struct {
        const char* line;
        const char* reason;
    } cases[] = {
        {"00:00:01.000 -> 00:00:02.000", "no line with \"-->\""},
        {"00:00:01,000 --> 00:00:02,000", "times are written 00:01:02.500"},
        {"00:01 --> 00:02", "times are written"},
        {"1:02.000 --> 00:03.000", "times are written"},
        {"00:01.00 --> 00:02.000", "times are written"},
        {"00:01.0000 --> 00:02.000", "times are written"},
        {"--> 00:02.000", "times are written"},
        {"00:01.000 -->", "times are written"},
        {"00:01.000 x --> 00:02.000", "between two times"},
        {"00:61.000 --> 01:02.000", "go up to 59"},
        {"60:00.000 --> 61:00.000", "go up to 59"},
        {"00:60:00.000 --> 01:02:00.000", "go up to 59"},
        {"00:02.000 --> 00:01.999", "the end is before the start"},
        {"9999999999:00:00.000 --> 9999999999:00:01.000", "times are written"},
    };
    for (const auto& [line, reason] : cases) {
        for (const std::string identifier : {"", "name\n"}) {
            const auto file =
                read("WEBVTT\n\n" + identifier + line + "\n<c.Nowhere>lost\nlost\n\n00:03.000 --> 00:04.000\nkept");
            ASSERT_TRUE(file) << line;
            ASSERT_EQ(file->problems.size(), 1u) << line;
            EXPECT_TRUE(file->problems[0].isLoss()) << line;
            EXPECT_EQ(file->problems[0].line, identifier.empty() ? 3u : 4u) << line;
            EXPECT_THAT(file->problems[0].message, HasSubstr(reason)) << line;
            ASSERT_EQ(file->cues.size(), 1u) << line;
            EXPECT_EQ(file->cues[0].text->string()->utf8(), "kept");
        }
    }
    const auto file = read("WEBVTT\n\n00:03.000 --> 00:04.000\na\n\nbehind a blank line\n");
    EXPECT_THAT(linesOf(file->problems), ElementsAre(HasSubstr("6: \"behind a blank line\" belongs to no cue")));
}

TEST_F(WebVTTTest, TimeGrowsWithTheFileAlone) {
    const auto repeated = [](const std::string& piece, size_t bytes) {
        std::string text;
        while (text.size() < bytes) text += piece;
        return text;
    };
    const std::string head = "WEBVTT\n\n00:01.000 --> 00:02.000\n";
    const struct {
        const char* piece;
        const char* reason;
    } cases[] = {
        {"<b>x", "tags that nothing closes"},
        {"<b>x</b>", "many short spans"},
        {"<c.One.One.One.One>x</c>", "many classes"},
        {"<", "brackets without end"},
        {"&", "references without end"},
        {"line\n", "many lines"},
        {"\n\n", "many blank lines"},
        {"-->\n", "many arrows"},
        {"<ruby><rt>", "deep nesting"},
    };
    for (const auto& [piece, reason] : cases) {
        const std::string file = head + repeated(piece, 1'000'000);
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_TRUE(read(file)) << reason;
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        // Far above the linear time, far below quadratic time.
        EXPECT_LT(seconds.count(), 5) << reason;
    }
}

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
        "5! times inside|6! <ruby> is se|7! \"<font>\" is |8: \"</b>\" comes|9: \"</u>\" close|9! \"<rt>\" is no|");
}

}  // namespace
}  // namespace qz
