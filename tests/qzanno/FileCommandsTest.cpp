#include <sstream>

#include <gmock/gmock.h>

#include "tests/qzanno/Tool.h"

namespace qz {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kBroadcast = QZANNO_EXAMPLES "/broadcast.plist";

class ArchiveCommandTest : public ToolTest {
protected:
    void SetUp() override {
        write("c.vtt",
              "WEBVTT\n\n00:01.000 --> 00:02.000\n<c.Speaker>ADA:</c> weaves\npatterns\n\n"
              "00:03.000 --> 00:04.000\nplain\n");
        ASSERT_EQ(run(std::string("archive pack c.vtt -o c.annostring -p ") + kBroadcast).exitCode, 0);
    }
};

TEST_F(ArchiveCommandTest, PackedTitlesShowTheirTextAnnotationsAndRuns) {
    const ToolResult result = run("archive show c.annostring");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
              "title 1: length 20, annotations: Speaker\n"
              "  | ADA: weaves\n"
              "  | patterns\n"
              "  0-4  Speaker\n"
              "  4-20  -\n"
              "title 2: length 5, annotations: -\n"
              "  | plain\n"
              "  0-5  -\n");
    const ToolResult resolved = run(std::string("archive show c.annostring -p ") + kBroadcast);
    EXPECT_THAT(resolved.out, HasSubstr("  0-4  Speaker\n      Noto Sans Bold 64\n      #ffd933; leading 6;"));
    EXPECT_THAT(resolved.err, IsEmpty());
}

TEST_F(ArchiveCommandTest, ATitleLooksTheSameFromAnArchive) {
    const std::string rest = std::string(" -s 640x360 -p ") + kBroadcast;
    EXPECT_EQ(run("render c.vtt -o direct" + rest).exitCode, 0);
    EXPECT_EQ(run(std::string("palette convert ") + kBroadcast + " p.annopalette").exitCode, 0);
    const ToolResult archived = run("render c.annostring -o archived -s 640x360 -p p.annopalette");
    EXPECT_EQ(archived.exitCode, 0) << archived.err;
    for (const char* name : {"0001.png", "0002.png"}) {
        ASSERT_TRUE(exists(std::string("direct/") + name));
        EXPECT_EQ(contentOf(std::string("archived/") + name), contentOf(std::string("direct/") + name)) << name;
    }
    EXPECT_EQ(run("palette convert p.annopalette back.plist").exitCode, 0);
    EXPECT_EQ(run("palette convert back.plist again.annopalette").exitCode, 0);
    EXPECT_EQ(contentOf("again.annopalette"), contentOf("p.annopalette"));
    EXPECT_EQ(run("palette check p.annopalette").exitCode, 0);
    EXPECT_THAT(run("render c.annostring -o lax -s 64x36").err, HasSubstr("there is no annotation \"Speaker\""));
    EXPECT_EQ(run("render c.annostring -o strict -s 64x36 --strict").exitCode, 1);
    EXPECT_FALSE(exists("strict"));
}

TEST_F(ArchiveCommandTest, DumpListsWhatNobodyKnows) {
    std::string bytes = contentOf("c.annostring");
    for (size_t at = 0; (at = bytes.find("QzAnno", at)) != std::string::npos;) bytes.replace(at, 6, "Foreig");
    write("foreign", bytes);
    const ToolResult result = run("archive dump foreign");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.out, StartsWith("typed stream, version 4"));
    EXPECT_THAT(result.out, HasSubstr("ForeigString v1 : NSObject v0"));
    write("cut", bytes.substr(0, bytes.size() / 2));
    const ToolResult cut = run("archive dump cut");
    EXPECT_EQ(cut.exitCode, 1);
    EXPECT_THAT(cut.err, StartsWith("qzanno: cut: byte "));
    EXPECT_THAT(cut.out, HasSubstr("ForeigString")) << "what stands before the damage is shown";
}

TEST_F(ArchiveCommandTest, RefusalsSayWhatTheFileIsAndDestroyNothing) {
    write("p.plist", paletteFile(kWhiteText));
    EXPECT_EQ(run("palette convert p.plist p.annopalette").exitCode, 0);
    write("t.txt", "one title");
    write("damaged.annostring", contentOf("c.annostring").substr(0, 100));
    write("b.plist", "bplist00...");
    std::string lost = contentOf("c.annostring");
    lost.replace(lost.rfind("QzAnnoKey"), 9, "QzOtherKy");
    write("lost.annostring", lost);
    struct Case {
        const char* arguments;
        const char* error;
    };
    for (const auto& [arguments, error] :
         {Case{"archive show p.annopalette", "class QzAnnoPalette, not annotated strings"},
          {"archive show c.vtt", "this is not a typed stream"},
          {"archive show missing", "cannot be opened"},
          {"archive show b.plist", "is a binary property list"},
          {"archive show lost.annostring", "1 annotation cannot be read and is lost"},
          {"render damaged.annostring -o x", "damaged.annostring: byte "},
          {"palette show c.annostring", "holds titles, not a palette"},
          {"palette convert c.annostring p.plist", "holds titles, not a palette"},
          {"archive pack t.txt -o no/such/folder.annostring", "No such file"},
          {"archive pack c.doc -o c.annostring", "is no .srt, .vtt, .ass, .ssa, .txt or .annostring file"}}) {
        const ToolResult result = run(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments;
        EXPECT_THAT(result.err, HasSubstr(error)) << arguments;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(run("archive show c.annostring").exitCode, 0);
    EXPECT_EQ(run("palette show p.plist").exitCode, 0);
}

class PaletteCommandTest : public ToolTest {
protected:
    static std::string real(const char* key, double value) {
        return "<key>" + std::string(key) + "</key><real>" + std::to_string(value) + "</real>";
    }
    // A grey, or a box of it.
    static std::string grey(const char* key, double level, double alpha = 1, const char* kind = "") {
        return "<key>" + std::string(key) + "</key><dict><key>Object Name</key><string>" + kind +
               "NSColor RGBCalibrated</string>" + real("Red", level) + real("Green", level) + real("Blue", level) +
               real("Alpha", alpha) + "<key>bbtype</key><integer>2</integer></dict>";
    }
    static std::string box(double level, double alpha = 1) {
        return grey("QzTextBoundingBoxAppearance as QzBBoxInfo", level, alpha, "BBox with ");
    }
    static std::string outline(double level, double alpha, const char* offset = "{0, 0}") {
        return grey("BackgroundColor as NSColor", level, alpha) + real("BackgroundWidth as NSNumber", 8) +
               "<key>BackgroundOffset as NSPoint</key><string>" + offset + "</string>";
    }
    static std::string margins(double all) {
        std::string list = "<key>BoundingMargins as NSArray of Numbers left,right,top,bottom</key><array>";
        for (int i = 0; i < 4; ++i) list += "<real>" + std::to_string(all) + "</real>";
        return list + "</array>";
    }
    static std::string size(double points) { return real("FontSize as NSNumber(float)", points); }
};

TEST_F(PaletteCommandTest, ShowsTheHighestPriorityFirstAndTheGlobalAnnotationLast) {
    const std::string missing = "<key>Full FontName as NSString</key><string>No Such Font</string>";
    const std::string all = real("Bold as NSNumber(bool)", 0) + real("Underline as NSNumber(bool)", 1) +
                            real("NSKern", 1.5) + outline(0, 0.5, "{2, 3}") + box(1) + margins(9) +
                            real("Horizontal Alignment as NSNumber(int)", 2) +
                            real("Vertical Alignment as NSNumber(int) enumeration", 7);
    write("p.plist", paletteFile(kWhiteText, annotation("Low", missing) + annotation("Höhe", all)));
    const ToolResult result = run("palette show p.plist");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
              "   NAME     FONT                    TEXT AND LAYERS                                   FRAME\n"
              "2  Höhe     not bold                underlined; kern 1.5; layer 1 8 {2, 3} #00000080  "
              "7; centred; margins 9 9 9 9; filled box #ffffff\n"
              "1  Low      No Such Font (missing)\n"
              "0  GLOBALS                          #ffffff\n");
}

TEST_F(PaletteCommandTest, CheckNamesEachFault) {
    write("p.plist",
          paletteFile("<key>BoundingBox as NSRect</key><string>abc</string>",
                      annotation("Low", "<key>Full FontName as NSString</key><string>No Such Font</string>")));
    const ToolResult result = run("palette check p.plist");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("qzanno: p.plist: \"GLOBALS\": "));
    EXPECT_THAT(result.err, HasSubstr("qzanno: p.plist: \"Low\": there is no font \"No Such Font\""));

    const ToolResult sound = run("palette check " QZANNO_EXAMPLES "/broadcast.plist");
    EXPECT_EQ(sound.exitCode, 0);
    EXPECT_THAT(sound.err, IsEmpty());
}

// Ratios and limits from WCAG 2.1 and its literature: #777 on white is the best-known near miss.
TEST_F(PaletteCommandTest, CheckWarnsOfWhatIsHardToRead) {
    const std::string font = "<key>Full FontName as NSString</key><string>DejaVu Sans</string>";
    const std::string good = font + margins(100);
    const struct {
        std::string entries;
        const char *warning, *reason;
    } cases[] = {
        {good + size(26) + grey("NSColor", 0x77 / 255.0) + box(1), "as low as 4.47:1; 4.5:1 is the minimum", "4.478"},
        {good + size(26) + grey("NSColor", 0x76 / 255.0) + box(1), "", "4.54"},
        {good + size(40) + grey("NSColor", 0x77 / 255.0) + box(1), "", "large text"},
        {good + size(40) + grey("NSColor", 0x95 / 255.0) + box(1), "as low as 2.99:1; 3.0:1 is the minimum for large",
         ""},
        {good + size(40) + kWhiteText, "nothing surrounds the letters", ""},
        {good + size(40) + kWhiteText + box(0, 0), "nothing surrounds the letters", "a clear box"},
        {good + size(40) + kWhiteText + outline(0, 1), "", "21"},
        {good + size(40) + kWhiteText + outline(0, 1, "{4, 0}"), "nothing surrounds the letters", "a shadow"},
        {good + size(40) + kWhiteText + outline(0, 0.3), "as low as 2.10:1", "over a white picture: #b3b3b3"},
        {good + size(40) + grey("NSColor", 0.5) + outline(0, 0.3), "as low as 1.00:1", "over a grey one"},
        {good + size(40) + kWhiteText + box(0, 0.6) + outline(0, 0.6), "", "together they suffice"},
        {good + size(20) + kWhiteText + box(0), "23 points high, 2.2 % of the screen; 2.7 % is", ""},
        {good + size(20) + kWhiteText + box(0), "use a font size of at least 25", ""},
        {font + margins(54) + size(40) + kWhiteText + box(0), "(left 54 of 96, right 54 of 96 points)", "5 % of 1920"},
        {font + size(40) + kWhiteText + box(0), "left 0 of 96, right 0 of 96, top 0 of 54, bottom 0 of 54", ""},
        {font + "<key>BoundingBox as NSRect</key><string>{{0.05, 0.05}, {0.9, 0.9}}</string>" + size(40) + kWhiteText +
             box(0),
         "", "the safe title area itself"},
        {font + margins(500) + size(40) + kWhiteText + box(0), "80 points between the top and the bottom margin", ""},
    };
    for (const auto& c : cases) {
        write("p.plist", paletteFile(c.entries, annotation("Quiet", "")));
        const ToolResult result = run("palette check p.plist");
        EXPECT_EQ(result.exitCode, 0) << result.err;
        const std::string warning = c.warning;
        if (warning.empty())
            EXPECT_THAT(result.err, IsEmpty()) << c.reason;
        else
            EXPECT_THAT(result.err, HasSubstr(warning)) << c.reason;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), warning.empty() ? 0 : 1) << result.err;
        EXPECT_EQ(run("palette check p.plist --strict").exitCode, warning.empty() ? 0 : 1);
    }
    // An annotation is checked for what it changes, combined with the global style.
    write("p.plist", paletteFile(good + size(40) + kWhiteText + box(0),
                                 annotation("Dim", grey("NSColor", 0.3)) + annotation("Low", margins(10))));
    const ToolResult result = run("palette check p.plist -s 1280x720");
    EXPECT_THAT(result.err, HasSubstr("\"Dim\": the letters' contrast"));
    EXPECT_THAT(result.err, HasSubstr("\"Low\": text may leave the safe title area, 5 % from each edge of the screen "
                                      "(left 10 of 64, right 10 of 64, top 10 of 36, bottom 10 of 36 points)"));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << result.err;
}

TEST_F(PaletteCommandTest, StarterPalettesAreReadableAndDrawTheirExamples) {
    const ToolResult list = run("palette new");
    std::istringstream lines(list.out);
    std::string line;
    int count = 0;
    for (; std::getline(lines, line); ++count) {
        const std::string name = line.substr(0, line.find(' '));
        SCOPED_TRACE(name);
        const std::string screen =
            " -s " + line.substr(line.rfind('(') + 1, line.rfind(')') - line.rfind('(') - 1) + " ";
        EXPECT_EQ(run("palette new " + name).exitCode, 0);
        const ToolResult check = run("palette check --strict " + name + ".plist" + screen);
        EXPECT_EQ(check.exitCode, 0);
        EXPECT_THAT(check.err, IsEmpty());
        const std::string example = QZANNO_PALETTES "/" + name + ".vtt";
        const ToolResult drawn = run("render --strict " + example + " -p " + name + ".plist -o " + name + screen);
        EXPECT_EQ(drawn.exitCode, 0);
        EXPECT_THAT(drawn.err, IsEmpty());
        for (const auto& file : std::filesystem::directory_iterator(path(name))) {
            const Ref<NSBitmapImageRep> title = picture(name + "/" + file.path().filename().string());
            int64_t ink = 0;
            int64_t unsafeInk = 0;
            const int32_t width = title->pixelsWide();
            const int32_t height = title->pixelsHigh();
            for (int32_t y = 0; y < height; ++y) {
                for (int32_t x = 0; x < width; ++x) {
                    const bool isSafe =
                        x >= width / 20 && x < width - width / 20 && y >= height / 20 && y < height - height / 20;
                    (isSafe ? ink : unsafeInk) += title->rowWithin(y)[x * 4 + 3] > 0;
                }
            }
            EXPECT_GT(ink, 2000) << file.path();
            EXPECT_EQ(unsafeInk, 0) << file.path();
        }
    }
    EXPECT_EQ(count, 8) << list.out;
}

TEST_F(PaletteCommandTest, AStarterPaletteReplacesNoFile) {
    write("mine.plist", "mine");
    const ToolResult refused = run("palette new karaoke -o mine.plist");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("mine.plist: exists already"));
    EXPECT_EQ(contentOf("mine.plist"), "mine");
    EXPECT_EQ(run("palette new karaoke -o mine.plist --overwrite").exitCode, 0);
    EXPECT_EQ(contentOf("mine.plist"), run("palette new karaoke -o -").out);
    const ToolResult unknown = run("palette new karaok");
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.err, HasSubstr("no starter palette \"karaok\"; there are: documentary, film-subtitle, "));
}

}  // namespace
}  // namespace qz
