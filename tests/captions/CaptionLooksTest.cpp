#include <gmock/gmock.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "captions/Ass.h"
#include "captions/SubRip.h"
#include "captions/WebVTT.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

using testing::HasSubstr;

using Reader = std::optional<CaptionFile> (*)(const NSData&, const CueNames&, CaptionProblem*);

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
    std::string shown(Reader reader, const std::string& file, Looks which, const std::vector<const char*>& house) {
        const Ref<QzAnnoPalette> palette = paletteOf({});
        palette->setUndoManager(NSUndoManager::init());
        for (const char* name : house) palette->createAnno(NSString::stringWithUTF8String(name));
        CaptionLooks looks(palette, {1920, 1080}, which);
        CaptionProblem error;
        const auto captions = reader(*NSData::dataWithBytes(file), looks, &error);
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
    const Reader vtt = readWebVTT, srt = readSubRip, ass = readAss;
    const struct {
        Reader reader;
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
        ASSERT_TRUE(readAss(*NSData::dataWithBytes(file), looks, &error)) << error.message;
    std::string names;
    for (int32_t priority = 1; priority <= palette->maxPriority(); ++priority)
        names += palette->annoKeyAtPriority(priority)->name()->utf8() + " ";
    EXPECT_EQ(names, "Loud Loud Sign Ann i ");
    EXPECT_EQ(looks.houseKeyAt(1)->name()->utf8(), "Ann") << "whatever has come below it";
}

}  // namespace
}  // namespace qz
