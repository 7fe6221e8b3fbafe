#include <cstring>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/qzanno/Tool.h"
#include "tests/support/FontFiles.h"
#include "tests/support/Pixels.h"

namespace qz {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;

class RenderTest : public ToolTest {
protected:
    std::vector<nlohmann::json> manifest(const std::string& name) const {
        std::vector<nlohmann::json> lines;
        std::istringstream file(contentOf(name));
        for (std::string line; std::getline(file, line);) lines.push_back(nlohmann::json::parse(line));
        return lines;
    }
};

TEST_F(RenderTest, OneTitleBecomesAPictureOfTheScreen) {
    const ToolResult result = run("render --text Hello -o hello.png");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_THAT(result.out, IsEmpty());
    const auto bitmap = picture("hello.png");
    EXPECT_EQ(bitmap->pixelsWide(), 1920);
    EXPECT_EQ(bitmap->pixelsHigh(), 1080);
    const PixelBox ink = inkOf(*bitmap);
    EXPECT_GT(ink.height(), 30);
    EXPECT_GT(ink.top, 900) << "the built-in palette puts titles at the foot";
    EXPECT_NEAR(ink.left + ink.right, 1920, 16) << "and in the middle";
}

TEST_F(RenderTest, EveryCueBecomesAFileNamedByItsNumberAndALineOfTheManifest) {
    const ToolResult result = run("render " QZANNO_EXAMPLES "/first-title.vtt -p " QZANNO_EXAMPLES
                                  "/broadcast.plist -d 960x540 -o titles --manifest titles/all.jsonl");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    const auto lines = manifest("titles/all.jsonl");
    ASSERT_EQ(lines.size(), 8u);
    for (size_t i = 0; i < lines.size(); ++i) {
        const nlohmann::json& line = lines[i];
        SCOPED_TRACE(line.dump());
        const std::string file = "titles/000" + std::to_string(i + 1) + ".png";
        EXPECT_EQ(line["index"], i + 1);
        EXPECT_EQ(line["file"], file);
        EXPECT_EQ(line["width"], 960);
        EXPECT_EQ(line["height"], 540);
        EXPECT_EQ(line["bytesPerRow"], 960 * 4);
        EXPECT_EQ(line["missingFonts"], nlohmann::json::array());
        EXPECT_FALSE(inkOf(*picture(file)) == PixelBox{});
    }
    EXPECT_EQ(lines[1]["start"], 4.5);
    EXPECT_EQ(lines[1]["end"], 8);
    EXPECT_EQ(lines[0]["text"], "Ada Lovelace\nMathematician, author of the first program");
    EXPECT_EQ(lines[0]["bbox"], (nlohmann::json{{"x", 0}, {"y", 0}, {"width", 1920}, {"height", 1080}}));
}

TEST_F(RenderTest, TheBoxIsCutOutOfTheScreen) {
    ASSERT_EQ(run("render --text Hello -o full.png").exitCode, 0);
    ASSERT_EQ(run("render --text Hello -b -o box.png --manifest box.jsonl").exitCode, 0);
    const auto box = picture("box.png");
    const nlohmann::json place = manifest("box.jsonl").at(0)["bbox"];
    EXPECT_EQ(box->pixelsWide(), place["width"]);
    EXPECT_EQ(box->pixelsHigh(), place["height"]);
    const PixelBox inFull = inkOf(*picture("full.png"));
    const PixelBox inBox = inkOf(*box);
    EXPECT_EQ(inFull.left, inBox.left + static_cast<int>(place["x"]));
    EXPECT_EQ(inFull.top, inBox.top + static_cast<int>(place["y"]));
    EXPECT_EQ(inFull.width(), inBox.width());
}

// Each option reaches the picture; the tests of the library check what it does there.
TEST_F(RenderTest, OptionsChangeThePicture) {
    write("p.plist", paletteFile(kWhiteText, annotation("Top",
                                                        "<key>Vertical Alignment as NSNumber(int) enumeration</key>"
                                                        "<integer>2</integer>")));
    const auto drawn = [&](const std::string& options) {
        return run("render --text 'Hello \u9AA8.' -s 640x180 -o - " + options).out;
    };
    const std::string plain = drawn(""), ofPalette = drawn("-p p.plist");
    ASSERT_EQ(plain.size(), 640u * 180 * 4);
    EXPECT_TRUE(drawn("--direction ltr") == plain);
    EXPECT_EQ(drawn("-d 1280x180").size(), 2 * plain.size());
    for (const char* options : {"--merge-layers", "--no-antialias", "--direction rtl", "--lang zh-Hans"})
        EXPECT_TRUE(drawn(options) != plain) << options;
    EXPECT_TRUE(drawn("-p p.plist -a Top") != ofPalette);
    const ToolResult unknown = run("render --text Hello -p p.plist -a Nope -o x.png");
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.err, "qzanno: p.plist: there is no annotation \"Nope\"; there are: Top\n");
    EXPECT_FALSE(exists("x.png"));
    write("p.plist", paletteFile("<key>FontSize as NSNumber(float)</key><real>-5</real>"));
    EXPECT_THAT(run("render --text Hello -p p.plist -o x.png").err, HasSubstr("qzanno: p.plist: \"GLOBALS\": "));
    EXPECT_THAT(run("render --text Hello -p p.plist -o x.png -q").err, IsEmpty());
    EXPECT_THAT(run("render --text Hello -o x.png -v").err, HasSubstr("Annopalette made"));
}

TEST_F(RenderTest, RawPixelsGoToAFileOrToStandardOutput) {
    ASSERT_EQ(run("render --text Hello -s 320x180 -o hello.rgba").exitCode, 0);
    const ToolResult piped = run("render --text Hello -s 320x180 -o -");
    EXPECT_EQ(piped.exitCode, 0);
    ASSERT_EQ(piped.out.size(), 320u * 180 * 4);
    EXPECT_EQ(piped.out, contentOf("hello.rgba"));
    EXPECT_NE(piped.out.find('\xff'), std::string::npos);
}

TEST_F(RenderTest, CompositesOverAFrame) {
    NSBitmapImageRep::Format format;
    format.pixelsWide = 640;
    format.pixelsHigh = 360;
    const auto frame = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format);
    for (int32_t y = 0; y < 360; ++y) {
        for (int32_t x = 0; x < 640; ++x) {
            const uint8_t pixel[] = {0, static_cast<uint8_t>(x), 200, 255};
            std::memcpy(frame->row(y) + 4 * x, pixel, 4);
        }
    }
    write("frame.png", std::string(pngFromBitmap(*frame)->view()));
    ASSERT_EQ(run("render --text Hello --over frame.png -o over.png").exitCode, 0);
    const auto over = picture("over.png");
    ASSERT_EQ(over->pixelsWide(), 640) << "the frame's size is the data size";
    EXPECT_EQ(std::memcmp(over->row(0), frame->row(0), 640 * 4), 0) << "above the title the frame is untouched";
    EXPECT_GT(boxOf(*over, [](Pixel p) { return p.red == 255; }).width(), 20);

    const ToolResult other = run("render --text Hello --over frame.png -d 100x100 -o other.png");
    EXPECT_EQ(other.exitCode, 1);
    EXPECT_THAT(other.err, HasSubstr("frame.png: the frame is 640x360 pixels, not 100x100"));
}

TEST_F(RenderTest, StrictFailsOnWhatIsOtherwiseStoodInFor) {
    write("p.plist", paletteFile("<key>Full FontName as NSString</key><string>No Such Font</string>"));
    const ToolResult lax = run("render --text Hello -p p.plist -o lax.png --manifest lax.jsonl");
    EXPECT_EQ(lax.exitCode, 0);
    EXPECT_THAT(lax.err, HasSubstr("No Such Font"));
    EXPECT_EQ(manifest("lax.jsonl").at(0)["missingFonts"], nlohmann::json::array({"No Such Font"}));
    const ToolResult strict = run("render --text Hello -p p.plist -o strict.png --strict");
    EXPECT_EQ(strict.exitCode, 1);
    EXPECT_THAT(strict.err, HasSubstr("qzanno: title 1: the font \"No Such Font\" is not installed"));
    EXPECT_FALSE(exists("strict.png"));

    write("c.vtt", "WEBVTT\n\n00:01.000 --> 00:02.000\n<c.Loud>Hello</c>\n");
    const ToolResult unknown = run("render c.vtt -o lax.png");
    EXPECT_EQ(unknown.exitCode, 0);
    EXPECT_THAT(unknown.err, HasSubstr("qzanno: c.vtt:4: "));
    EXPECT_THAT(unknown.err, HasSubstr("Loud"));
    EXPECT_EQ(run("render c.vtt -o strict.png --strict").exitCode, 1);
    EXPECT_FALSE(exists("strict.png"));
}

TEST_F(RenderTest, TheManifestTellsWhatIsNotShownAsAskedFor) {
    write("p.plist", paletteFile(kWhiteText + "<key>Full FontName as NSString</key><string>Noto Sans</string>",
                                 annotation("Bold",
                                            "<key>Full FontName as NSString</key><string>DejaVu Math TeX "
                                            "Gyre</string><key>Bold as NSNumber(bool)</key><integer>1</integer>")));
    const ToolResult plain = run("render --text 'Title 東京' -p p.plist -o x.png --manifest x.jsonl");
    EXPECT_THAT(plain.err, IsEmpty()) << "a font that serves is no warning";
    const nlohmann::json line = manifest("x.jsonl").at(0);
    EXPECT_EQ(line["substitutions"], nlohmann::json::parse(R"([{
        "fontAskedFor": "Noto Sans", "fontThatServed": "NotoSansCJKjp-Regular", "characters": "東京",
        "ranges": [{"location": 6, "length": 2}]}])"));
    EXPECT_EQ(line["missingGlyphs"], nlohmann::json::array());
    EXPECT_EQ(line["clipped"], nlohmann::json::array());

    const struct {
        const char *arguments, *line;
        bool isWarning;  // otherwise shown when verbose
    } cases[] = {
        {"--text 'Title 東京'", "the font \"Noto Sans\" does not have \"東京\"; \"NotoSansCJKjp-Regular\"", false},
        {"--text '\xF3\xBF\xBF\xB0'", "(U+FFFF0), which is missing from \"NotoSans-Regular\"", true},
        {"--text Title -a Bold", "the font \"DejaVuMathTeXGyre-Regular\" has no bold face", false},
        {"--text 'A title' -s 30x16", "the box is too small for \"title\", from character 3 on", true},
    };
    for (const auto& [arguments, expected, isWarning] : cases) {
        SCOPED_TRACE(arguments);
        const std::string command = std::string("render ") + arguments + " -p p.plist -o x.png";
        EXPECT_EQ(run(command).err.find(expected) != std::string::npos, isWarning);
        const ToolResult verbose = run(command + " -v");
        EXPECT_EQ(verbose.exitCode, 0);
        EXPECT_THAT(verbose.err, HasSubstr(std::string("qzanno: title 1: ")));
        EXPECT_THAT(verbose.err, HasSubstr(expected));
        std::filesystem::remove(path("x.png"));
        const ToolResult strict = run(command + " --strict");
        EXPECT_EQ(strict.exitCode, 1);
        EXPECT_THAT(strict.err, HasSubstr(expected));
        EXPECT_FALSE(exists("x.png"));
    }
}

TEST_F(RenderTest, FontFoldersServeOneRun) {
    std::filesystem::create_directory(path("fonts"));
    write("fonts/q.ttf", quokka(fontFile("DejaVu Serif")));
    write("fonts/broken.ttf", "this is no font");
    write("p.plist", paletteFile(kWhiteText + "<key>Full FontName as NSString</key><string>Quokka Serif</string>"));
    EXPECT_THAT(run("render --text Hello -p p.plist -o without.png").err, HasSubstr("Quokka Serif"));
    const ToolResult with = run("render --text Hello -p p.plist -o with.png --font-dir fonts");
    EXPECT_EQ(with.exitCode, 0);
    EXPECT_EQ(with.err, "qzanno: fonts/broken.ttf: cannot be read as a font and is left out\n");
    EXPECT_NE(contentOf("with.png"), contentOf("without.png"));
    EXPECT_EQ(run("palette check p.plist --font-dir fonts").exitCode, 0);
    EXPECT_EQ(run("palette check p.plist").exitCode, 1);
}

TEST_F(RenderTest, BadInputGetsALineAndLeavesFilesAlone) {
    write("old.png", "an older picture");
    write("text.txt", "Hello");
    write("none.plist", "no XML at all");
    write("cut.plist", paletteFile("").substr(0, 150));
    write(
        "later.plist",
        "<plist version=\"1.0\"><dict><key>Version</key><integer>1</integer><key>Palette</key><array/></dict></plist>");
    write("utf16.vtt", std::string("\xff\xfeW\0E\0B\0", 8));
    write("none.vtt", "1\n00:01.000 --> 00:02.000\nHello\n");
    write("latin.txt", "caf\xe9");
    write("two.vtt", "WEBVTT\n\n00:01.000 --> 00:02.000\nA\n\n00:02.000 --> 00:03.000\nB\n");
    const struct {
        std::string arguments;
        int exitCode;
        const char* line;
    } cases[] = {
        {"render text.txt -p none.plist -o old.png", 1, "none.plist: "},
        {"render text.txt -p cut.plist -o old.png", 1, "cut.plist: "},
        {"render text.txt -p later.plist -o old.png", 1, "later.plist: "},
        {"render text.txt -p missing.plist -o old.png", 1, "missing.plist: "},
        {"render missing.txt -o old.png", 1, "missing.txt: "},
        {"render text.doc -o old.png", 1, "text.doc: is no .srt, .vtt, .ass, .ssa, .txt or .annostring file"},
        {"render utf16.vtt -o old.png", 1, "utf16.vtt:1: "},
        {"render none.vtt -o old.png", 1, "none.vtt:1: "},
        {"render latin.txt -o old.png", 1, "latin.txt: "},
        {"render two.vtt -o old.png", 1, "old.png: one file cannot hold 2 titles"},
        {"render text.txt -s 0x0 -o old.png", 2, "0x0 is not a size"},
        {"render text.txt -s 100000x100000 -o old.png", 1, "a picture of 100000x100000 needs 40000000000 bytes"},
        {"render text.txt -s 10 -o old.png", 2, "10 is not a size"},
        {"render -o old.png", 2, "give a file or --text"},
        {"render text.txt --text Hello -o old.png", 2, "--text"},
        {"render text.txt --quality 7 -o old.png", 2, "--quality"},
        {"render text.txt -o x.jpg", 2, "x.jpg cannot be written; pictures end in .png or .rgba, and a folder"},
        {"render text.txt -o old.png --manifest m.txt", 2, "m.txt cannot be written; give a file that ends in .jsonl"},
        {"export c.vtt -o c", 2, "c cannot be written; give a file that ends in .vtt or .ass"},
        {"palette convert p.plist p.json", 2, "ends in .plist or .annopalette"},
        {"archive pack c.vtt -o c.png", 2, "ends in .annostring"},
        {"render text.txt --over text.txt -o old.png", 1, "text.txt: "},
        {"render text.txt -o text.txt/x.png", 1, "text.txt/x.png: "},
        {"render text.txt --font-dir nowhere -o old.png", 1, "nowhere: the folder of fonts cannot be read"},
        {"render text.txt --font-dir text.txt -o old.png", 1, "text.txt: the folder of fonts cannot be read"},
        {"render text.txt --direction up -o old.png", 2, "--direction"},
        {"palette show none.plist", 1, "none.plist: "},
        {"palette check none.plist", 1, "none.plist: "},
        {"render text.txt --lang 'no tag' -o old.png", 1, "--lang: \"no tag\" is not a language tag"},
        {"", 2, "subcommand"},
        {"fly", 2, "there is no command fly"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const ToolResult result = run(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_THAT(result.err, HasSubstr("qzanno: "));
        EXPECT_THAT(result.err, HasSubstr(c.line));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(contentOf("old.png"), "an older picture");
    }
}

// Looks are passed to the threads with their titles, and every property of a look changes the picture.
TEST_F(RenderTest, AFilesOwnLooksAreDrawnAndMakePicturesOfTheirOwn) {
    const std::string head =
        "[Script Info]\nPlayResX: 320\nPlayResY: 180\n[V4+ Styles]\nFormat: Name, PrimaryColour\n"
        "Style: Default,&HFFFFFF\n";
    std::string lines = "[Events]\nFormat: Start, End, Style, Text\n";
    for (const char* text : {"Sign,One", "Default,{\\p1}m 0 0", "Default,{\\c&HFF0000&}One", "Default,One", "Sign,Two"})
        lines += "Dialogue: 0:00:01.00,0:00:02.00," + std::string(text) + "\n";
    write("c.ass", head + "Style: Sign,&H0000FF\n" + lines);
    const std::string command = "render c.ass -s 320x180 -o out --manifest m.jsonl ";
    const ToolResult result = run(command + "-j 3");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr("c.ass:11: drawings are left out"));
    const auto isRed = [](Pixel p) { return p.red > 200 && p.green < 60 && p.blue < 60; };
    const auto isBlue = [](Pixel p) { return p.blue > 200 && p.green < 60 && p.red < 60; };
    EXPECT_GT(boxOf(*picture("out/0001.png"), isRed).width(), 20);
    EXPECT_FALSE(exists("out/0002.png")) << "its number is kept";
    EXPECT_GT(boxOf(*picture("out/0003.png"), isBlue).width(), 20);
    EXPECT_EQ(boxOf(*picture("out/0004.png"), isRed), PixelBox{});
    EXPECT_EQ(boxOf(*picture("out/0004.png"), isBlue), PixelBox{});
    const auto before = manifest("m.jsonl");
    ASSERT_EQ(before.size(), 4u);

    write("c.ass", head + "Style: Sign,&HFF0000\n" + lines);
    EXPECT_EQ(run(command + "--resume").exitCode, 0);
    EXPECT_GT(boxOf(*picture("out/0001.png"), isBlue).width(), 20) << "rendered again";
    EXPECT_EQ(manifest("m.jsonl").at(1)["key"], before.at(1)["key"]);
    EXPECT_EQ(run(command + "--looks house").exitCode, 0);
    EXPECT_EQ(contentOf("out/0001.png"), contentOf("out/0003.png")) << "the palette's look, and no other";
    EXPECT_THAT(run(command + "--strict").err, HasSubstr("c.ass: uses unsupported features; nothing is rendered"));
}

TEST_F(RenderTest, CaptionsStandWhereTheyAsk) {
    write("c.srt", "00:00:01,000 --> 00:00:02,000\nHere\n\n00:00:03,000 --> 00:00:04,000\n{\\an7}Here\n");
    write("c.vtt",
          "WEBVTT\n\n00:01.000 --> 00:02.000 line:50% position:75% size:50%\nHere\n\n"
          "00:03.000 --> 00:04.000 line:-2 align:right\nHere\n");
    ASSERT_EQ(run("render c.srt c.vtt -o out -d 960x540").err, "");
    const PixelBox foot = inkOf(*picture("out/c/0001.png"));
    const PixelBox corner = inkOf(*picture("out/c/0002.png"));
    // The built-in palette leaves 96 points at the sides and 54 above and below, of 1920 x 1080.
    EXPECT_GT(foot.top, 450);
    EXPECT_NEAR(corner.left, 48, 6);
    EXPECT_NEAR(corner.top, 27 + 8, 8) << "as far below the line's top as a capital is";
    const PixelBox half = inkOf(*picture("out/c.vtt/0001.png"));
    EXPECT_NEAR(half.left + half.right, 2 * 720, 8) << "the palette centres, so the middle is at three quarters";
    EXPECT_NEAR(half.top, 270 + 8, 8);
    const PixelBox second = inkOf(*picture("out/c.vtt/0002.png"));
    EXPECT_NEAR(second.right, 960 - 48, 8);
    EXPECT_NEAR(foot.top - second.top, 35, 4) << "one line of 60 points higher, at half the size";
    EXPECT_NEAR(foot.width(), second.width(), 1);
}

TEST_F(RenderTest, ExtremesAreDrawnAsFarAsTheyGo) {
    EXPECT_EQ(run("render --text Hello -s 1x1 -o tiny.png").exitCode, 0);
    EXPECT_EQ(picture("tiny.png")->pixelsWide(), 1);
    std::string text;
    while (text.size() < (1 << 20)) text += "one megabyte of title ";
    write("long.txt", text);
    EXPECT_EQ(run("render long.txt -o long.png").exitCode, 0);
    EXPECT_FALSE(inkOf(*picture("long.png")) == PixelBox{});
    write("empty.txt", "");
    EXPECT_EQ(run("render empty.txt -o empty.png").exitCode, 0);
    EXPECT_EQ(inkOf(*picture("empty.png")), PixelBox{});
    write("empty.vtt", "WEBVTT\n");
    const ToolResult none = run("render empty.vtt -o none");
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_THAT(none.err, HasSubstr("empty.vtt: holds no captions"));
}

}  // namespace
}  // namespace qz
