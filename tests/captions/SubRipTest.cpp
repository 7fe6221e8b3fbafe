#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "captions/PlainText.h"
#include "captions/SubRip.h"
#include "captions/WebVTTWriter.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kTimes = "00:00:01,000 --> 00:00:02,000\n";

class SubRipTest : public test::CaptionTest {
protected:
    SubRipTest() : CaptionTest({"b", "i", "u", "yellow", "#ff0000"}) {}

    bool read(std::string_view file) {
        cues_.clear();
        const auto captions = readSubRip(
            *NSData::dataWithBytes(file), *palette_, [this](CaptionCue&& cue) { cues_.push_back(std::move(cue)); },
            &error_);
        problems_ = captions ? linesOf(captions->problems) : std::vector<std::string>();
        return captions.has_value();
    }

    // "1-2.5 Hello|there": every cue's times and text, its line ends as "|".
    std::vector<std::string> shown() const {
        std::vector<std::string> lines;
        for (const CaptionCue& cue : cues_) {
            std::ostringstream line;
            std::string text = cue.text->string()->utf8();
            std::ranges::replace(text, '\n', '|');
            line << cue.start << "-" << cue.end << " " << text;
            lines.push_back(line.str());
        }
        return lines;
    }

    std::string names() const { return namesAt(*cues_.at(0).text); }

    std::vector<CaptionCue> cues_;
    std::vector<std::string> problems_;
    CaptionProblem error_;
};

TEST_F(SubRipTest, FilesAreReadAsPlayersReadThem) {
    const std::string first = kTimes, second = "00:00:02,000 --> 00:00:03,000\n";
    const struct {
        std::string file;
        const char *cues, *problem;  // null where there is no problem
        const char* reason;
    } cases[] = {
        {"1\n00:00:01,000 --> 00:00:02,500\nA\nB\n\n2\n01:00:03,000 --> 01:00:04,000\nC\n", "1-2.5 A|B, 3603-3604 C",
         nullptr, "as the format is meant"},
        {"\xEF\xBB\xBF"
         "1\r\n00:00:01.000 --> 00:00:02.500\r\nA\r\nB\r\n\r\n",
         "1-2.5 A|B", nullptr, "a byte order mark, CR LF, points"},
        {first + "A\n\n" + second + "B", "1-2 A, 2-3 B", nullptr, "no numbers, no last line end"},
        {"7\n" + first + "A\n3\n" + second + "B\n", "1-2 A, 2-3 B", nullptr, "no blank line, any number"},
        {"1\n" + first + "1984\n\n" + second + "2\n", "1-2 1984, 2-3 2", nullptr, "texts that are numbers"},
        {"1\n" + first + "A\n\nB\n\n2\n" + second + "C\n", "1-2 A||B, 2-3 C", "5: \"B\" follows a blank line",
         "a text with a blank line"},
        {"1\n" + first + "\n2\n" + second + "B\n", "1-2 , 2-3 B", nullptr, "an empty cue"},
        {"0:1:2 -> 1:03,5\nA\n", "62-63.5 A",
         "1: the time line \"0:1:2 -> 1:03,5\" is read as 00:01:02,000 --> 00:01:03,500", "what people write"},
        {"00:00:01,000 --> 00:00:02,000 X1:40 X2:600\nA\n", "1-2 A", "1: \"X1:40 X2:600\" after the times is ignored",
         "coordinates"},
        {"00:00:05,000 --> 00:00:02,000\nA\n", "5-5 A", "1: the cue ends before it starts", "times exchanged"},
        {"1\n00:00:01,000 --> soon\nA\n\n2\n" + second + "B\n", "2-3 B",
         "2: the time line \"00:00:01,000 --> soon\" is not written as", "broken times lose their own text only"},
        {"Made by hand\n\n1\n" + first + "A --> B\n\n", "1-2 A --> B", "1: \"Made by hand\" belongs to no cue",
         "text above the first cue; an arrow in a text"},
        {"", "", nullptr, "an empty file"},
    };
    for (const auto& [file, cues, problem, reason] : cases) {
        SCOPED_TRACE(reason);
        ASSERT_TRUE(read(file));
        std::string found;
        for (const std::string& cue : shown()) found += (found.empty() ? "" : ", ") + cue;
        EXPECT_EQ(found, cues);
        ASSERT_EQ(problems_.size(), problem ? 1u : 0u) << testing::PrintToString(problems_);
        if (problem) {
            EXPECT_THAT(problems_[0], testing::StartsWith(problem));
        }
    }
}

TEST_F(SubRipTest, MarkupBecomesAnnotations) {
    const struct {
        const char *payload, *text, *names;
        std::vector<const char*> problems;
        const char* reason;
    } cases[] = {
        {"<b>a<i>b</i></b>c", "abc", "b|b,i|", {}, "tags"},
        {"<B>a<I>b</B>c</I>", "abc", "b|b,i|i", {}, "they may cross, in any letter case"},
        {"{b}a{/b}{i}b{/i}", "ab", "b|i", {}, "the same in braces"},
        {"<b>a<b>b</b>c</b>d", "abcd", "b|b|b|", {}, "nested in itself"},
        {"<font color=\"Yellow\">a<font color='#FF0000'>b</font>c</font>d",
         "abcd",
         "yellow|#ff0000|yellow|",
         {},
         "the innermost colour alone"},
        {"<font face=Arial color=yellow>a</font>", "a", "yellow", {"the \"face\" of <font>"}, "other attributes"},
        {"<font color=mauve>a</font><font color=mauve>b</font>", "ab", "|", {"the colour \"mauve\""}, "once a file"},
        {"<i>a", "a", "i", {"<i> is not closed"}, "holds to the end"},
        {"a</i>", "a", "", {"</i> closes nothing"}, "an end alone"},
        {"<i></i>a", "a", "", {}, "over nothing"},
        {"<laughs> I <3 a{b", "<laughs> I <3 a{b", nullptr, {"\"<laughs>\" is not a tag"}, "nothing lost"},
        {"a &lt;b&gt; &amp &unknown;", "a <b> &amp &unknown;", nullptr, {}, "references that end"},
        {"a<br>b<s>c</s>", "a\nbc", nullptr, {"no annotation \"s\""}, "line ends, struck text"},
        {"{\\i1\\c&H0000FF&}a{\\i0}b{\\r}c", "abc", "i,#ff0000|#ff0000|", {}, "overrides"},
        {"{\\fad(1,2)\\an8}a{\\fad(1,2)}", "a", "", {"{\\fad} has no effect"}, "other overrides"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.payload);
        ASSERT_TRUE(read(std::string(kTimes) + c.payload));
        ASSERT_EQ(cues_.size(), 1u);
        EXPECT_EQ(cues_[0].text->string()->utf8(), c.text) << c.reason;
        EXPECT_EQ(c.names ? names() : std::string(), c.names ? c.names : "") << c.reason;
        ASSERT_EQ(problems_.size(), c.problems.size()) << testing::PrintToString(problems_);
        for (size_t i = 0; i < c.problems.size(); ++i) EXPECT_THAT(problems_[i], HasSubstr(c.problems[i]));
    }
}

TEST_F(SubRipTest, NumberPadPlacesBecomePlacements) {
    const std::pair<const char*, const char*> cases[] = {
        {"{\\an1}", "line:-1 align:left"},          {"{\\an5}", "line:50%,center align:center"},
        {"{\\an9}{\\an2}", "line:0 align:right"},   {"{\\a6}", "line:0 align:center"},
        {"{\\a11}", "line:50%,center align:right"}, {"{\\an0}{\\a4}", ""}};
    for (const auto& [tag, settings] : cases) {
        ASSERT_TRUE(read(std::string(kTimes) + tag + "a"));
        EXPECT_EQ(settingsOfPlacement(cues_.at(0).placement), settings) << tag;
        EXPECT_EQ(shown().at(0), "1-2 a");
    }
}

TEST_F(SubRipTest, EncodingsAreReadOrRefusedInOneLine) {
    const std::u16string text = u"\uFEFF1\r\n00:00:01,000 --> 00:00:02,000\r\n\u00E9\u6771\r\n";
    std::string little;
    std::string big;
    for (const char16_t unit : text) {
        little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    }
    for (const std::string& file : {little, big}) {
        ASSERT_TRUE(read(file));
        EXPECT_THAT(shown(), ElementsAre("1-2 é東"));
        EXPECT_THAT(problems_, IsEmpty());
    }
    const struct {
        std::string file;
        uint32_t line;
        const char* message;
    } refused[] = {
        {little.substr(0, little.size() - 1), 1, "ends inside a character"},
        {little.substr(2), 1, "in UTF-16; save it as UTF-8"},
        {std::string("\xFF\xFE\0\0A\0\0\0", 8), 1, "in UTF-32"},
        {std::string("1\n") + kTimes + "caf\xE9\n", 3, "not in UTF-8"},
    };
    ASSERT_TRUE(read(std::string(kTimes) + "étéé, \xE9t\xC3\n"));
    EXPECT_THAT(shown(), ElementsAre("1-2 étéé, \uFFFDt\uFFFD")) << "more is whole than is damaged";
    EXPECT_THAT(problems_, testing::Contains(HasSubstr("2: byte 39")));
    for (const auto& c : refused) {
        EXPECT_FALSE(read(c.file));
        EXPECT_EQ(error_.line, c.line);
        EXPECT_THAT(error_.message, HasSubstr(c.message));
        EXPECT_THAT(cues_, IsEmpty());
    }
}

TEST_F(SubRipTest, PlainTextIsOneTitle) {
    const struct {
        std::string file;
        const char* text;
        const char* reason;
    } cases[] = {
        {"one\ntwo\n", "one\ntwo", "the last line end goes"}, {"one\r\ntwo\r\n", "one\ntwo", "line ends of Windows"},
        {"one\rtwo", "one\ntwo", "line ends of old"},         {"one\n\n", "one\n", "an empty last line stays"},
        {"\xEF\xBB\xBFone", "one", "a byte-order mark"},      {"<b>&amp;", "<b>&amp;", "no markup is read"},
        {"", "", "an empty file is an empty title"},
    };
    for (const auto& [file, text, reason] : cases) {
        const auto read = wholeCaptionFile(readPlainText, *NSData::dataWithBytes(file), *palette_);
        ASSERT_TRUE(read && read->cues.size() == 1) << reason;
        EXPECT_EQ(read->cues[0].text->string()->utf8(), text) << reason;
    }
}

TEST_F(SubRipTest, OtherEncodingsOfPlainTextAreNamed) {
    for (const auto& [file, message] :
         std::map<std::string, const char*>{{"one\ntw\xF6\n", "byte 6 begins no character; save it as UTF-8"},
                                            {"\xEF\xBB\xBFone \xE2\x82", "byte 7 begins no character"},
                                            {"\xED\xA0\x80", "byte 0 begins no character"},
                                            {std::string("o\0n\0", 4), "the file is in UTF-16"}}) {
        CaptionProblem error;
        EXPECT_FALSE(wholeCaptionFile(readPlainText, *NSData::dataWithBytes(file), *palette_, &error));
        EXPECT_THAT(error.message, testing::HasSubstr(message));
    }
}

}  // namespace
}  // namespace qz
