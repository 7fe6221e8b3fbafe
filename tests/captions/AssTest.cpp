#include <algorithm>

#include <gmock/gmock.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "captions/Ass.h"
#include "captions/AssPalette.h"
#include "captions/AssWriter.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kHead =
    "[Script Info]\nPlayResX: 640\nPlayResY: 360\n[V4+ Styles]\n"
    "Format: Name, Fontname, Fontsize, Alignment, MarginL, MarginR, MarginV, Italic\n"
    "Style: Default,DejaVu Sans,20,2,10,10,10,0\nStyle: Loud,DejaVu Sans,30,8,20,20,30,-1\n[Events]\n"
    "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n";

class AssTest : public test::CaptionTest {
protected:
    AssTest() : CaptionTest({"b", "i", "i0", "u", "Loud", "#ff0000", "#ff00007f", "#ffffff7f", "Ann"}) {}

    static std::string dialogue(const std::string& text, const std::string& style = "Default",
                                const std::string& rest = ",0,0,0") {
        return "Dialogue: 0,0:00:01.00,0:00:02.50," + style + "," + rest + ",," + text + "\n";
    }

    CaptionFile read(const std::string& file) {
        CaptionProblem error;
        auto captions = wholeCaptionFile(readAss, *NSData::dataWithBytes(file), *palette_, &error);
        if (captions) return std::move(*captions);
        CaptionFile none;
        none.problems = {error};
        return none;
    }

    // "b[Bold] and b,i[both]": a text with the names of its annotations before each stretch that has some.
    static std::string shown(const QzAnnoString& text) {
        std::string result;
        for (const QzAnnoString::Run& run : text.runs()) {
            const std::string names = namesOf(*run.keys);
            std::string part = utf8FromUtf16(
                std::u16string_view(text.string()->characters()).substr(run.range.location, run.range.length));
            std::ranges::replace(part, '\n', '|');
            result += names.empty() ? part : names + "[" + part + "]";
        }
        return result;
    }
};

TEST_F(AssTest, DialogueBecomesAnnotatedCues) {
    const struct {
        std::string line, expected;
        const char* reason;
    } cases[] = {
        {dialogue("Hello, you"), "Hello, you", "commas are text"},
        {dialogue("One\\NTwo\\nthree\\hfour"), "One|Two three\u00A0four", "hard and soft line ends, a hard blank"},
        {dialogue("{\\b1}Bold{\\b0} {\\i1\\b1}both"), "b[Bold] b,i[both]", ""},
        {dialogue("{\\b700}x{\\b400}y"), "b[x]y", "weights"},
        {dialogue("{\\c&H0000FF&}red{\\c} {\\1c&HFF&}red{\\1c&H00FF00&}green"), "#ff0000[red] #ff0000[red]green", ""},
        {dialogue("a{a note}b"), "ab", "a comment"},
        {dialogue("{\\p1}m 0 0 l 9 9") + dialogue("{\\p1}m 0 0 l 9 9{\\p0}drawn"), "drawn", "drawings"},
        {dialogue("{\\alpha&H80&\\c&HFF&}a{\\c}b{\\1a}c"), "#ff00007f[a]#ffffff7f[b]c", "alpha, of the style's colour"},
        {dialogue("{\\i0\\b0}a{\\i1\\b1}b{\\i0}c", "Loud"), "Loud,i0[a]Loud,i,b[b]Loud,i0,b[c]",
         "a trait of the style is taken away"},
        {dialogue("{\\t(0,9,\\b1)}x"), "x", "what changes over time"},
        {dialogue("all", "Loud"), "Loud[all]", "a style is a class"},
        {dialogue("all", "*Loud"), "Loud[all]", ""},
        {dialogue("a{\\rLoud}b{\\r}c{\\i1}d{\\r}e"), "aLoud[b]ci[d]e", ""},
        {dialogue("Hi", "Default", "Ann,0,0,0"), "Ann[Hi]", "a speaker"},
        {dialogue("open { brace"), "open { brace", ""},
        {dialogue("\\{x\\} \\z"), "{x} \\z", "escaped, and no escape"},
        {"Comment: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,x\n" + dialogue("y"), "y", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const CaptionFile captions = read(kHead + c.line);
        ASSERT_THAT(captions.cues, SizeIs(1)) << linesOf(captions.problems).front();
        EXPECT_EQ(shown(*captions.cues[0].text), c.expected) << c.reason;
        EXPECT_EQ(captions.cues[0].start, 1);
        EXPECT_EQ(captions.cues[0].end, 2.5);
    }
}

TEST_F(AssTest, PlacesAreThoseOfTheScript) {
    using Edge = CuePlacement::Edge;
    using Alignment = CuePlacement::Alignment;
    const auto placed = [&](const std::string& line) { return read(kHead + line).cues.at(0).placement; };
    EXPECT_TRUE(placed(dialogue("x")).isEmpty());
    const CuePlacement top = placed(dialogue("{\\an9\\an1}x"));
    EXPECT_EQ(top.alignment, Alignment::right) << "the first counts";
    EXPECT_EQ(top.row, CuePlacement::Row::top);
    EXPECT_EQ(placed(dialogue("{\\a6}x")), placed(dialogue("{\\an8}x")));
    const CuePlacement point = placed(dialogue("{\\an7\\pos(64,90)}x"));
    EXPECT_EQ(point.position, 10);
    EXPECT_EQ(point.positionEdge, Edge::start);
    EXPECT_EQ(point.line, (CuePlacement::Line{25, true, Edge::start}));
    const CuePlacement margins = placed(dialogue("x", "Default", ",64,0,36"));
    EXPECT_EQ(margins.position, 10);
    EXPECT_EQ(margins.size, 100 * (640 - 64 - 10) / 640.0) << "0 is the style's margin";
    EXPECT_EQ(margins.line, (CuePlacement::Line{90, true, Edge::end})) << "from the foot";
    EXPECT_EQ(placed(dialogue("x", "Loud", ",0,0,36")).line, (CuePlacement::Line{10, true, Edge::start}));
}

TEST_F(AssTest, WhatIsNotInTheFormIsSaidOrRefused) {
    const struct {
        std::string file;
        size_t cues;
        const char* message;
    } cases[] = {
        {"", 0, "1: is not a SubStation Alpha script"},
        {"[Script Info]\nTitle: x\n", 0, "1: is not a SubStation Alpha script"},
        {"\xE4[Events]\n", 0, "is not in UTF-8"},
        {kHead + std::string("Dialogue: 0,x,0:00:02.00,Default,,0,0,0,,y\n"), 0,
         "10: the times \"x\" and \"0:00:02.00\""},
        {kHead + std::string("Dialogue: 0,0:00:03.00,0:00:02.00,Default,,0,0,0,,y\n"), 1, "ends before it starts"},
        {kHead + std::string("Dialogue: 0,0:00:01.00\n"), 0, "10: the times"},
        {kHead + std::string("Dialogue:"), 0, "10: the times"},
        {kHead + dialogue("{\\fs40}x{\\fs50}y"), 1, "10: {\\fs} has no effect"},
        {kHead + dialogue("{\\c&Hxyz}x"), 1, "{\\c} has no effect"},
        {kHead + dialogue("x", "Quiet"), 1, "the class \"Quiet\" is ignored"},
        {kHead + dialogue("x", "Default", ",many,0,0"), 1, "MarginL \"many\" cannot be read"},
        {"[Events]\nDialogue: 0,0:00:01.00,9999999:00:00.00,D,,0,0,0,,x", 0, "the times"},
        {"[V4+ Styles]\nStyle: A,B,nan,&H1234567890&,,,,,,,,,,,,,,,99,-1e99\n", 0,
         "2: Fontsize \"nan\" cannot be read"},
        {"[Script Info]\nPlayResX: -4\n[Events]\n", 0, "2: PlayResX \"-4\" is not a screen size"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const CaptionFile captions = read(c.file);
        EXPECT_THAT(captions.cues, SizeIs(c.cues));
        ASSERT_THAT(captions.problems, SizeIs(testing::Ge(1u)));
        EXPECT_THAT(linesOf(captions.problems).front(), HasSubstr(c.message));
    }
    // Each kind is reported once, however often it occurs, and scanning is not quadratic.
    EXPECT_THAT(read(kHead + dialogue("{\\fs1}x{\\fs2}y") + dialogue("{\\fs3}z")).problems, SizeIs(1));
    const std::string losses =
        "[Script Info]\nTitle: x\nWrapStyle: 0\nScaledBorderAndShadow: yes\nTimer: 100\n"
        "[Fonts]\nx\n[Graphics]\n[Events]\nPicture: 0,0:00:00.00\nPicture: 0,0:00:00.00\n"
        "Dialogue: 1,0:00:01.00,0:00:02.00,,,0,0,0,Banner;20,{\\p1}m 0 0{\\p0}{\\b300}x\n";
    EXPECT_THAT(linesOf(read(losses + losses).problems),
                ElementsAre(HasSubstr("3: WrapStyle \"0\""), HasSubstr("6: the fonts"), HasSubstr("8: the pictures"),
                            HasSubstr("10: \"Picture\" lines"), HasSubstr("12: drawings"), HasSubstr("12: weights"),
                            HasSubstr("12: Layer 1"), HasSubstr("12: the effect \"Banner;20\"")));
    for (const char* part : {"{", "{\\t(", "{\\p1}{\\p0}", "\\N", "{\\i1}{\\i0}"}) {
        std::string text;
        while (text.size() < 2'000'000) text += part;
        EXPECT_THAT(read(kHead + dialogue(text)).cues, SizeIs(1)) << part;
    }
}

TEST_F(AssTest, ColoursAreReadAsPlayersReadThem) {
    const struct {
        const char* text;
        std::optional<CaptionColour> colour;
    } cases[] = {
        {"&H00112233", CaptionColour{0x33, 0x22, 0x11, 255}},
        {"&H80FFFFFF&", CaptionColour{255, 255, 255, 127}},
        {"&hff&", CaptionColour{255, 0, 0, 255}},
        {"65535", CaptionColour{255, 255, 0, 255}},
        {"-1", CaptionColour{255, 255, 255, 0}},
        {"&H", {}},
        {"red", {}},
        {"", {}},
    };
    for (const auto& c : cases) EXPECT_EQ(parsedAssColour(c.text), c.colour) << c.text;
}

// A palette's looks written as styles read back the same, as far as the format allows.
TEST_F(AssTest, StylesComeBackAsTheyWere) {
    const auto make = [](const char* name, AssStyle style) {
        style.name = name;
        style.fontName = "DejaVu Sans";
        return style;
    };
    AssStyle outlined;
    outlined.primary = {250, 240, 10, 255};
    outlined.outline = {1, 2, 3, 200};
    outlined.fontSize = 66;
    outlined.outlineWidth = 4;
    outlined.shadow = 3;
    outlined.back = {9, 8, 7, 100};
    outlined.spacing = 1.5;
    outlined.marginLeft = 130;
    outlined.marginRight = 140;
    outlined.marginVertical = 70;
    AssStyle boxed = outlined;
    boxed.borderStyle = 3;
    boxed.outlineWidth = 5;
    boxed.shadow = 0;
    boxed.back = {0, 0, 0, 255};
    boxed.isBold = true;
    boxed.alignment = 7;
    AssStyle bare = outlined;
    bare.outlineWidth = bare.shadow = 0;
    bare.outline = bare.back = {0, 0, 0, 255};
    bare.alignment = 6;
    std::string file = "[Script Info]\nPlayResX: 1920\nPlayResY: 1080\n[V4+ Styles]\n";
    for (const AssStyle& style : {make("Default", outlined), make("Boxed", boxed), make("Bare", bare)})
        file += "Style: " + writtenStyle(style) + "\n";
    CaptionProblems problems;
    CaptionProblem error;
    const auto script = parseAssScript(*NSData::dataWithBytes(file), problems, &error);
    ASSERT_TRUE(script) << error.message;
    EXPECT_THAT(linesOf(problems.take()), IsEmpty());
    std::vector<std::string> lost;
    const CaptionLooks looks(paletteOfAss(*script, {}, lost), {1920, 1080});
    std::string reason;
    EXPECT_THAT(lost, IsEmpty());
    const std::string written = writeAss({}, {looks}, reason)->file;
    for (size_t at = file.find("Style: "); at != std::string::npos; at = file.find("Style: ", at + 1)) {
        EXPECT_THAT(written, HasSubstr(file.substr(at, file.find('\n', at) - at)));
    }
}

TEST_F(AssTest, TitlesComeBackWithTheirTextsAndTimes) {
    const CaptionLooks looks(paletteOf({"Loud, very"}), {1920, 1080});
    CaptionFile titles;
    const std::vector<std::string> texts = {"Hello, you", "One\nTwo", "a{b}c", "x\\Ny", "a\u00A0b", ""};
    for (const std::string& text : texts) {
        const auto string = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text));
        titles.cues.push_back({3661.239, 3662, {}, {}, {}, string, {}, {}});
    }
    std::string reason;
    const std::string script = writeAss(titles, {looks}, reason)->file;
    const CaptionFile captions = read(script);
    EXPECT_THAT(linesOf(captions.problems), IsEmpty());
    ASSERT_THAT(captions.cues, SizeIs(texts.size()));
    for (size_t i = 0; i < texts.size(); ++i) {
        std::string text = captions.cues[i].text->string()->utf8();
        // An invisible character separates a backslash from the following letter.
        if (const size_t joiner = text.find("\u2060"); joiner != std::string::npos) text.erase(joiner, 3);
        EXPECT_EQ(text, texts[i]);
        EXPECT_DOUBLE_EQ(captions.cues[i].start, 3661.24);
    }
    EXPECT_THAT(script, HasSubstr("Style: Loud; very,")) << "a comma would end the column";
}

const std::string kVtt = "WEBVTT\n\n00:01.000 --> 00:02.000\n";
const std::string kSrt = "00:00:01,000 --> 00:00:02,000\n";
const std::string kAss =
    "[Script Info]\nPlayResX: 1920\nPlayResY: 1080\n[V4+ Styles]\nFormat: Name, Fontname, PrimaryColour, Italic, "
    "MarginV\n"
    "Style: Default,DejaVu Sans,&HFFFFFF,0,10\nStyle: Loud,DejaVu Sans,&HFF,-1,10\nStyle: Sign,DejaVu "
    "Sans,&HFF0000,0,99\n"
    "[Events]\nFormat: Start, End, Style, Name, Text\nDialogue: 0:00:01.00,0:00:02.00,";

class CaptionLooksTest : public test::CaptionTest {
protected:
    CaptionLooksTest() : CaptionTest({}) {}

    // The one cue's runs, "[i red u]text", with what the looks of the file give them; "house" for the palette's own.
    std::string shown(CaptionReader reader, const std::string& file, Looks which,
                      const std::vector<const char*>& house) {
        const Ref<QzAnnoPalette> palette = paletteOf({});
        palette->setUndoManager(NSUndoManager::init());
        for (const char* name : house) palette->createAnno(NSString::stringWithUTF8String(name));
        CaptionLooks looks(palette, {1920, 1080}, which);
        CaptionProblem error;
        const auto captions = wholeCaptionFile(reader, *NSData::dataWithBytes(file), looks, &error);
        if (!captions || captions->cues.size() != 1) return error.message;
        problems_ = linesOf(captions->problems);
        std::string text;
        for (const QzAnnoString::Run& run : captions->cues[0].text->runs()) {
            std::string words;
            for (const auto& key : run.keys->objects<QzAnnoKey>()) {
                if (!key->isDefault() && !looks.lookOf(key)) words += " house";
            }
            const Ref<NSDictionary> attributes = palette->attributesForSet(run.keys);
            const auto flag = [&](const Ref<NSString>& name, const std::string& word) {
                const auto number = attributes->objectForKey<NSNumber>(*name);
                if (number) words += " " + word + (number->intValue() != 0 ? "" : "0");
            };
            flag(QzBoldAttribute, "b");
            flag(QzItalicAttribute, "i");
            flag(QzUnderlineAttribute, "u");
            flag(QzStrikeThroughAttribute, "s");
            if (const auto colour = attributes->objectForKey<NSColor>(*QzTextColorAttribute)) {
                const auto byte = [](float part) { return static_cast<uint8_t>(part * 255 + 0.5F); };
                words += " " + nameOfColour({byte(colour->redComponent()), byte(colour->greenComponent()),
                                             byte(colour->blueComponent()), byte(colour->alphaComponent())});
            }
            if (attributes->objectForKey<NSObject>(*QzTextBoundingBoxAppearanceAttribute)) words += " box";
            if (const auto tag = attributes->objectForKey<NSString>(*NSLanguageAttributeName))
                words += " " + tag->utf8();
            const std::string part = utf8FromUtf16(
                captions->cues[0].text->string()->characters().substr(run.range.location, run.range.length));
            text += words.empty() ? part : "[" + words.substr(1) + "]" + part;
        }
        return text;
    }

    std::vector<std::string> problems_;
};

TEST_F(CaptionLooksTest, AFilesOwnLooksAreDrawnUnlessThePaletteHasThatName) {
    using enum Looks;
    const CaptionReader vtt = readWebVTT, srt = readSubRip, ass = readAss;
    const struct {
        CaptionReader reader;
        std::string file;
        Looks which;
        std::vector<const char*> house;
        const char *shown, *reason;
        size_t problems = 0;
    } cases[] = {
        {vtt, kVtt + "<b>a</b><i>b</i><u>c</u>", both, {"b"}, "[house]a[i]b[u]c", "the palette's wins"},
        {vtt, kVtt + "<b>a</b><i>b</i>", house, {"b"}, "[house]ab", "", 1},
        {vtt, kVtt + "<b>a</b><c.X>b</c>", file, {"b", "X"}, "[b]a[house]b", "the file's wins where there is one"},
        {vtt, kVtt + "<c.red>a<c.yellow>b</c></c><c.X>c", both, {}, "[#ff0000]a[#ffff00]bc", "the inner colour", 1},
        {vtt, kVtt + "<c.bg_black.red>a</c>", both, {}, "[#ff0000 box]a", "a box behind the whole"},
        {vtt, kVtt + "a<c.bg_blue>b</c>", both, {}, "a[box]b", "which is not shown for a part", 1},
        {vtt, kVtt + "<lang de>a<lang ja>b</lang></lang><lang x_>c", both, {}, "[de]a[ja]bc", "languages", 1},
        {vtt, kVtt + "<lang de>a", house, {}, "[de]a", "a language is no look"},
        {srt,
         kSrt + "<font color=Yellow>a</font><font color=#F00>b</font><font color=0000ff80>c</font>",
         both,
         {"yellow"},
         "[house]a[#ff0000]b[#0000ff80]c",
         "as CSS and players write colours"},
        {srt, kSrt + "<font color=nocolour>a</font>", both, {}, "a", "", 1},
        {srt, kSrt + "<s>a</s>{\\i1\\c&HFF&}b", both, {}, "[s]a[i #ff0000]b", ""},
        {ass, kAss + "Default,,{\\b1\\u1\\s1}a{\\b0\\u0\\s0\\1a&H80&}b", both, {}, "[b u s]a[#ffffff7f]b", "overrides"},
        {ass, kAss + "Loud,,a{\\i0}b{\\c&H00FF00&}c", both, {}, "[i #ff0000]a[i0 #ff0000]b[i0 #00ff00]c", "a style"},
        {ass, kAss + "Loud,,a", both, {"Loud"}, "[house]a", "of the palette"},
        {ass,
         kAss + "Loud,,a{\\rSign}b{\\r}c",
         both,
         {},
         "[i #ff0000]a[b0 i0 u0 s0 #0000ff]b[i #ff0000]c",
         "in its place"},
        {ass,
         kAss + "Loud,,a{\\rDefault}b",
         both,
         {},
         "[i #ff0000]a[b0 i0 u0 s0 #ff0000]b",
         "the palette's global look"},
        {ass, kAss + "Loud,,a", house, {}, "a", "", 1},
        {ass, kAss + "Default,,a", both, {}, "a", "the global style is the palette's"},
        {ass, kAss + "Default,,a", file, {}, "[b0 i0 u0 s0 #ffffff box]a", "unless the file's count"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        EXPECT_EQ(shown(c.reader, c.file, c.which, c.house), c.shown) << c.reason;
        EXPECT_EQ(problems_.size(), c.problems) << testing::PrintToString(problems_);
    }
}

TEST_F(CaptionLooksTest, StylesLieBelowThePaletteAndOneNameMayHaveTwoLooks) {
    const Ref<QzAnnoPalette> palette = paletteOf({"Ann"});
    CaptionLooks looks(palette, {1920, 1080}, Looks::both);
    CaptionProblem error;
    std::string other = kAss;
    other.replace(other.find("&HFF,"), 5, "&HFF00,");
    for (const std::string& file : {kAss + "Loud,Ann,a{\\rSign\\i1}b", other + "Loud,Ann,a"})
        ASSERT_TRUE(wholeCaptionFile(readAss, *NSData::dataWithBytes(file), looks, &error)) << error.message;
    std::string names;
    for (int32_t priority = 1; priority <= palette->maxPriority(); ++priority)
        names += palette->annoKeyAtPriority(priority)->name()->utf8() + " ";
    EXPECT_EQ(names, "Loud Loud Sign Ann i ");
    EXPECT_EQ(looks.houseKeyAt(1)->name()->utf8(), "Ann") << "whatever has come below it";
}

}  // namespace
}  // namespace qz
