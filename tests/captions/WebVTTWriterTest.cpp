#include <filesystem>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/Files.h"
#include "captions/CueSettings.h"
#include "captions/KeyExchange.h"
#include "captions/WebVTT.h"
#include "captions/WebVTTWriter.h"
#include "platform/foundation/DiagnosticText.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Each character with the names of its annotations, in the order of the names: "a[b,One]".
std::string shown(const QzAnnoString& text) {
    std::string result;
    for (const QzAnnoString::Run& run : text.runs()) {
        std::vector<std::string> names;
        for (const auto& key : run.keys->objects<QzAnnoKey>()) names.push_back(key->name()->utf8());
        std::ranges::sort(names);
        result += utf8FromUtf16(text.string()->characters().substr(run.range.location, run.range.length)) + "[";
        for (const std::string& name : names) result += name + ",";
        result += "]";
    }
    return result;
}

std::string shown(const CaptionFile& captions) {
    std::string result = captions.header + "\n";
    for (const CaptionCue& cue : captions.cues) {
        result += cue.preamble + "\n" + cue.identifier + "\n" + std::to_string(cue.start) + " " +
                  std::to_string(cue.end) + " " + cue.settings + "\n" + shown(*cue.text) + "\n";
    }
    return result + captions.trailer;
}

class WebVTTWriter : public test::CaptionTest {
protected:
    WebVTTWriter() : CaptionTest({"One", "Two", "Lower Third", "a_b c", "Dr. No", "x--", "b", "i", "v", "Mary"}) {}

    CaptionFile read(std::string_view file) {
        auto captions = wholeCaptionFile(readWebVTT, *NSData::dataWithBytes(file), {*palette_, &others_});
        EXPECT_TRUE(captions) << file;
        return captions.value_or(CaptionFile());
    }
    CaptionFile cueOf(const std::string& payload) {
        CaptionFile captions = read("WEBVTT\n\n00:00:01.000 --> 00:00:02.000\n" + payload + "\n");
        EXPECT_EQ(captions.cues.size(), 1u) << payload;
        return captions;
    }
    std::string write(const CaptionFile& captions) {
        std::string reason;
        auto written = writeWebVTT(captions, {CaptionLooks(palette_, {1920, 1080})}, reason);
        EXPECT_TRUE(written) << reason;
        if (!written) return {};
        losses_ = written->losses;
        return written->file;
    }
    /// Removes the original markup, so that the writer cannot reuse it.
    static CaptionFile withoutPayloads(CaptionFile captions) {
        for (CaptionCue& cue : captions.cues) cue.payload.clear();
        return captions;
    }

    LooseKeys others_;
    std::vector<std::string> losses_;
};

TEST_F(WebVTTWriter, marksUpTextsSoThatTheyReadTheSame) {
    const struct {
        const char* read;
        const char* written;
        const char* reason;
    } cases[] = {
        {"plain", "plain", ""},
        {"a &lt;b> &amp;amp; --&gt;", "a &lt;b&gt; &amp;amp; --&gt;", "what would be markup, a reference, an arrow"},
        {"<c></c>\na\n<c></c>\n<c></c>\nb\n<c></c>", "<c></c>\na\n<c></c>\n<c></c>\nb\n<c></c>", "empty lines"},
        {"a&#13;b", "a&#13;b", "a carriage return is no line end"},
        {"<b>a<c.One>b</c></b><c.One>c</c>", "<b>a<c.One>b</c></b><c.One>c</c>", "annotations that cross"},
        {"<c.Two>a<c.One>b</c></c><c.One>c</c>", "<c.Two>a<c.One>b</c></c><c.One>c</c>", "of the same tag"},
        {"<c.One>a</c><c.One>b</c>", "<c.One>ab</c>", "annotations that meet"},
        {"<c.Lower_Third>a<i>b</i></c>", "<c.Lower_Third>a<i>b</i></c>", "a blank in the name"},
        {"<i><c.One>a</c>b</i>", "<i><c.One>a</c>b</i>", "the longer one outside"},
        {"<v Mary>a</v>", "<c.Mary>a</c>", "whoever was a voice is known by the former payload alone"},
        {"<v Dr. No>a</v>", "<v Dr. No>a</v>", "no class has a dot"},
        {"<v a_b c>a</v>", "<v a_b c>a</v>", "a class would read as \"a b c\""},
        {"<c.x-- >a</c>", "<c.x-- >a</c>", "no arrow in a tag"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const CaptionFile captions = cueOf(c.read);
        const std::string file = write(withoutPayloads(captions));
        EXPECT_EQ(file, std::string("WEBVTT\n\n00:00:01.000 --> 00:00:02.000\n") + c.written + "\n");
        EXPECT_EQ(shown(read(file)), shown(captions));
    }
}

TEST_F(WebVTTWriter, keepsFilesToTheLetterAndTheirTitlesWithoutTheirMarkup) {
    const std::string odd =
        "WEBVTT - made by hand\nKind: captions\n\nSTYLE\n::cue(.One) { color: red }\n\nNOTE\ntwo\nlines\n\n"
        "intro\n100:00:01.001 --> 100:00:02.000 line:0 align:start\n<lang he>a</lang> <c.Nobody>b</c>\n\n"
        "00:00:03.000 --> 00:00:03.000\n\n"
        "broken\n00:04 --> 00:05.000\nkept all the same\n\nno cue\n\n00:00:06.000 --> 00:00:07.000\nz\n\nNOTE end\n";
    std::vector<std::string> files = {odd, "WEBVTT\n"};
    for (const auto& entry : std::filesystem::directory_iterator(QZANNO_EXAMPLES)) {
        if (entry.path().extension() != ".vtt") continue;
        files.emplace_back(readFile(entry.path().string(), nullptr)->view());
    }
    ASSERT_GE(files.size(), 4u);
    for (const std::string& file : files) {
        const CaptionFile captions = read(file);
        EXPECT_EQ(write(captions), file);
        EXPECT_THAT(losses_, ElementsAre());
        EXPECT_EQ(shown(read(write(withoutPayloads(captions)))), shown(captions));
    }
    EXPECT_EQ(shown(read("WEBVTT\r\n\r\n00:01.000 --> 00:02.000\r\na\r\rNOTE b\r\n")),
              shown(read("WEBVTT\n\n00:00:01.000 --> 00:00:02.000\na\n\nNOTE b\n")));
}

TEST_F(WebVTTWriter, saysWhatAnEditedTitleLoses) {
    const struct {
        const char* payload;
        const char* written;
        std::vector<std::string> losses;
    } cases[] = {
        {"<v Mary>Hi</v>", "!<v Mary>Hi</v>", {}},
        {"<v Tom>Hi</v>", "!<v Tom>Hi</v>", {}},
        {"<v Tom>Hi</v> <v Bob>Ho</v>", "!<v Tom>Hi</v> <v Bob>Ho</v>", {}},
        {"<v>Hi</v>", "!<v >Hi</v>", {}},
        {"<c.No_one>Hi</c>", "!<c.No_one>Hi</c>", {}},
        {"<lang he>x</lang><00:01.500><c.Nobody.One>y</c>",
         "!<lang he>x</lang><c.Nobody><c.One>y</c></c>",
         {"title 1: <00:01.500> is gone"}},
        {"<c.GLOBALS>x</c>", "!x", {"title 1: <c.GLOBALS> is gone"}},
    };
    for (const auto& c : cases) {
        CaptionFile captions = cueOf(c.payload);
        captions.cues[0].text->insertAnnoString(*QzAnnoString::initWithString("!"_ns), 0);
        EXPECT_THAT(write(captions), HasSubstr(std::string(".000\n") + c.written + "\n"));
        EXPECT_EQ(losses_, c.losses) << c.payload;
    }
}

TEST_F(WebVTTWriter, refusesWhatHasNoForm) {
    const struct {
        std::u16string text;
        double start, end;
        const char* reason;
    } cases[] = {
        {std::u16string(1, u'\0'), 0, 1, "U+0000"},
        {u"\xD83D", 0, 1, "lone surrogate"},
        {u"a", 2, 1, "times"},
        {u"a", -1, 1, "times"},
        {u"a", std::numeric_limits<double>::quiet_NaN(), 1, "times"},
    };
    for (const auto& c : cases) {
        const auto text = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(c.text));
        CaptionFile captions;
        captions.cues.push_back({c.start, c.end, {}, {}, {}, text, {}, {}, 0});
        std::string reason;
        EXPECT_FALSE(writeWebVTT(captions, {CaptionLooks(palette_, {1920, 1080})}, reason)) << c.reason;
        EXPECT_THAT(reason, HasSubstr(c.reason));
    }
}

TEST_F(WebVTTWriter, keepsNamesThatThePaletteLacks) {
    palette_->removeAnno(palette_->findAnnoKey("Lower Third"_ns));
    const CaptionFile captions = cueOf("<c.Lower_Third>a</c><c.One>b<c.Nobody>c</c></c><u>d</u>");
    EXPECT_EQ(shown(*captions.cues[0].text), "a[Lower_Third,]b[One,]c[Nobody,One,]d[u,]");
    EXPECT_EQ(captions.problems.size(), 3u);
    EXPECT_TRUE(captions.cues[0].text->annotation(others_.keyNamed("Nobody"), 2)) << "one key for a name";
}

/// Writes, reads, edits and rewrites titles whose names are partly in the palette: everything except the reported
/// losses must come back.
TEST_F(WebVTTWriter, losesOfRandomTitlesWhatItTells) {
    const std::vector<std::string> names = {"One",     "a b",  "a_b",    "a_b c",  "b",    "i",    "u",
                                            "v",       "c",    "Mary",   "x--",    "é.",   "<&>;", "R&D",
                                            "/",       "ruby", "-->",    "&amp;",  "日本", "t\tb", "lang he",
                                            "lang fr", "red",  "yellow", "bg_blue"};
    const std::u16string_view pieces[] = {u"a",  u"b",    u"\n",         u"\n\n", u"<",    u">",
                                          u"&",  u"-->",  u"&lt;",       u"</c>", u" ",    u"\t",
                                          u"\r", u"שלום", u"\U0001F600", u";",    u"NOTE", u"WEBVTT"};
    size_t told = 0;
    for (uint32_t seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto below = [&](size_t count) { return static_cast<uint32_t>(random() % count); };
        std::vector<std::string> known;
        for (const std::string& name : names) {
            if (below(3) > 0) known.push_back(name);
        }
        palette_ = paletteOf(known);
        others_ = {};
        const auto annotate = [&](QzMutableAnnoString& text) {
            for (uint32_t i = below(6); i > 0 && text.length() > 0; --i) {
                Range range = {below(text.length()), 0};
                range.length = below(text.length() - range.location + 1);
                // Annotations begin and end between characters.
                for (const uint64_t end : {uint64_t{range.location}, uint64_t{range.end()}}) {
                    const std::u16string_view characters = text.string()->characters();
                    if (end < characters.size() && (characters[end] & 0xFC00) == 0xDC00) range = {0, text.length()};
                }
                const std::string& name = names[below(names.size())];
                const auto key = palette_->findAnnoKey(NSString::stringWithUTF8String(name));
                if (range.length > 0) text.toggleAnno(key ? key : others_.keyNamed(name), range);
            }
        };
        CaptionFile captions;
        captions.header = "WEBVTT";
        for (uint32_t cue = below(4); cue > 0; --cue) {
            std::u16string characters;
            for (uint32_t i = below(12); i > 0; --i) characters += pieces[below(std::size(pieces))];
            const auto text = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(characters));
            annotate(*text);
            const double start = below(100000000) / 1000.0;
            const double end = start + below(5000) / 1000.0;
            captions.cues.push_back({start,
                                     end,
                                     below(2) ? "" : "id " + std::to_string(cue),
                                     below(2) ? "" : "line:0",
                                     {},
                                     text,
                                     {},
                                     {},
                                     0});
        }
        const auto keptOf = [&](CaptionFile file, const std::vector<std::string>& losses) {
            for (size_t i = 0; i < file.cues.size(); ++i) {
                const std::string place = "title " + std::to_string(i + 1) + ": the annotation ";
                file.cues[i].text =
                    withKeys(*file.cues[i].text, [&](const Ref<QzAnnoKey>& key) -> Ref<QzAnnoKey> {
                        std::string name = key->name()->utf8();
                        const std::string loss = place + quotedExcerpt(name) + " is ";
                        if (std::ranges::any_of(losses, [&](const auto& each) { return each.starts_with(loss); }))
                            return {};
                        if (palette_->contains(key)) return key;
                        // Blanks in a name missing from the palette may come back as "_" if no other name is spelt that
                        // way.
                        std::string joined = name;
                        std::ranges::replace(joined, ' ', '_');
                        const bool isFree =
                            joined == name || shown(*file.cues[i].text).find(joined + ",") == std::string::npos;
                        return others_.keyNamed(isFree ? joined : name);
                    })->mutableCopy();
            }
            return shown(file);
        };
        for (int pass = 0; pass < 2; ++pass) {
            const std::string file = write(captions);
            CaptionFile back = read(file);
            ASSERT_EQ(keptOf(back, losses_), keptOf(captions, losses_)) << file;
            ASSERT_EQ(keptOf(back, {}) != keptOf(captions, {}), !losses_.empty()) << file;
            told += losses_.size();
            captions = std::move(back);
            for (CaptionCue& cue : captions.cues) annotate(*cue.text);
        }
    }
    EXPECT_GT(told, 50u);
}

TEST_F(WebVTTWriter, readsBackWhateverDamagedFilesHold) {
    const std::string whole(readFile(QZANNO_EXAMPLES "/first-title.vtt", nullptr)->view());
    const std::string_view pieces[] = {
        "\n", "\n\n", "-->", "<", ">", "&", "NOTE", "<c.", "</c>", "\r", "00:00:01.000 --> "};
    for (uint32_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::string file = whole;
        for (int i = 0; i < 12; ++i) {
            size_t place = 7 + random() % (file.size() - 7);
            // Between characters.
            while (place < file.size() && (file[place] & 0xC0) == 0x80) ++place;
            file.insert(place, pieces[random() % std::size(pieces)]);
        }
        const CaptionFile captions = read(file);
        const std::string written = write(captions);
        EXPECT_EQ(shown(read(written)), shown(captions));
        EXPECT_EQ(write(read(written)), written);
        EXPECT_EQ(shown(read(write(withoutPayloads(captions)))), shown(captions));
    }
}

TEST(SettingsOfPlacement, areReadBack) {
    for (const char* settings : {"", "line:0", "line:-1 align:left", "line:12.5%,end position:10%,line-right size:40%",
                                 "line:50%,center position:0% align:end"}) {
        CaptionProblems problems;
        EXPECT_EQ(settingsOfPlacement(parseCueSettings(settings, 1, problems)), settings);
    }
    CuePlacement topLeft;
    topLeft.row = CuePlacement::Row::top;
    topLeft.alignment = CuePlacement::Alignment::left;
    EXPECT_EQ(settingsOfPlacement(topLeft), "line:0 align:left");
}

}  // namespace
}  // namespace qz
