#include <gmock/gmock.h>

#include "tests/qzanno/Tool.h"

namespace qz {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;

class ExportTest : public ToolTest {
protected:
    struct Box {
        int left = 100000, top = 100000, right = -1, bottom = -1;
    };

    static bool isInk(int red, int green, int blue) {
        return std::max({std::abs(red - 128), std::abs(green - 128), std::abs(blue - 128)}) > 24;
    }
    static bool isRed(int red, int green, int blue) { return red > 200 && green < 60 && blue < 60; }

    // The box of pixels other than the grey background, in a raw RGB frame of 1920 x 1080.
    static Box boxOf(const std::string& frame, bool (*counts)(int, int, int)) {
        Box box;
        const auto* const bytes = reinterpret_cast<const uint8_t*>(frame.data());
        for (size_t i = 0; i + 2 < frame.size(); i += 3) {
            if (!counts(bytes[i], bytes[i + 1], bytes[i + 2])) continue;
            const int x = static_cast<int>(i / 3 % 1920);
            const int y = static_cast<int>(i / 3 / 1920);
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x), std::max(box.bottom, y)};
        }
        return box;
    }
};

// Compares with the library that players use for drawing scripts.
TEST_F(ExportTest, PlayersDrawAScriptWhereTheTitleIs) {
    const struct {
        const char *palette, *cue;
        int tolerance;
        const char* reason;
    } cases[] = {
        {"film-subtitle", "Hello there", 4, "one line at the foot"},
        {"film-subtitle", "<b>Hello</b> and <i>good bye</i>", 4, "fonts of parts"},
        {"film-subtitle", "<c.Top><c.Sign>NO ENTRY</c></c>", 4, "the top, letters apart"},
        {"film-subtitle", "<c.red>שלום</c> לכל העולם", 60, "the first word on the right, in a font that stands in"},
        {"film-subtitle", "plain <u><c.red>الأول</c> ثم الأخير</u>", 60, "looks of the file; two directions"},
        {"film-subtitle", "This is a line that is far too long for the room between its margins and must be broken", 8,
         "broken at the same place"},
        {"documentary", "<c.Place>The Lofoten Wall\n<c.Date>NORWAY</c></c>", 10, "two sizes, the left, no leading"},
        {"documentary", "<c.Chapter>The Ice Road</c>", 6, "the middle"},
        {"speaker-colours", "<c.Right><c.green>Nobody</c></c>", 6, "a box, the right"},
        {"high-contrast", "<c.Alert>MIND THE STEP</c>", 6, "a box at the top"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cue);
        write("c.vtt", "WEBVTT\n\n00:00.000 --> 00:02.000\n" + std::string(c.cue) + "\n");
        const std::string palette = " -p " QZANNO_PALETTES "/" + std::string(c.palette) + ".plist ";
        ASSERT_EQ(run("export c.vtt -o c.ass -q" + palette).exitCode, 0);
        const std::string grey =
            "ffmpeg -nostdin -v warning -y -f lavfi -i color=0x808080:size=1920x1080:rate=1:duration=1";
        const ToolResult theirs =
            shell(grey + ",format=gbrp -vf ass=c.ass -frames:v 1 -f rawvideo -pix_fmt rgb24 theirs.raw");
        ASSERT_EQ(theirs.exitCode, 0);
        EXPECT_THAT(theirs.err, IsEmpty()) << "no complaint";
        ASSERT_EQ(
            shell("\"$QZANNO\" render c.vtt -o ours.png " + palette + " && " + grey +
                  " -i ours.png -filter_complex overlay=format=gbrp -frames:v 1 -f rawvideo -pix_fmt rgb24 ours.raw")
                .exitCode,
            0);
        for (const auto counts : {isInk, isRed}) {
            const Box our = boxOf(contentOf("ours.raw"), counts);
            const Box their = boxOf(contentOf("theirs.raw"), counts);
            ASSERT_TRUE(our.right > our.left || counts == isRed);
            EXPECT_NEAR(our.left, their.left, c.tolerance) << c.reason;
            EXPECT_NEAR(our.right, their.right, c.tolerance) << c.reason;
            EXPECT_NEAR(our.top, their.top, c.tolerance) << c.reason;
            EXPECT_NEAR(our.bottom, their.bottom, c.tolerance) << c.reason;
        }
    }
}

TEST_F(ExportTest, WhatAScriptCannotHoldIsSaidOnce) {
    write("c.vtt", "WEBVTT\n\n00:00.000 --> 00:02.000\nOne\n\n00:03.000 --> 00:04.000\nTwo\n");
    write("t.txt", "Title");
    const std::string documentary = " -p " QZANNO_PALETTES "/documentary.plist";
    const ToolResult told = run("export c.vtt -o c.ass" + documentary);
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_EQ(std::count(told.err.begin(), told.err.end(), '\n'), 2) << told.err;
    EXPECT_THAT(told.err, HasSubstr("c.ass: the leading is left out"));
    EXPECT_THAT(told.err, HasSubstr("c.ass: shadows are as wide as the outline"));
    const struct {
        std::string line;
        const char* message;
    } refused[] = {
        {"export c.vtt -o strict.ass --strict" + documentary, "nothing is written, because of --strict"},
        {"export t.txt -o t.ass", "t.txt: has titles without times"},
        {"export c.ass -o c.ass", "c.ass: is the input"},
        {"palette convert c.vtt.ass x.plist", "c.vtt.ass: cannot be opened"},
    };
    for (const auto& c : refused) {
        const ToolResult result = run(c.line);
        EXPECT_EQ(result.exitCode, 1) << c.line;
        EXPECT_THAT(result.err, HasSubstr(c.message));
    }
    EXPECT_FALSE(exists("strict.ass"));
}

TEST_F(ExportTest, StylesBecomeAPaletteThatTheScriptIsReadWith) {
    write("c.vtt", "WEBVTT\n\n00:00.000 --> 00:02.000\n<c.Alert>MIND</c>\n\n00:03.000 --> 00:04.000\nTwo\n");
    ASSERT_EQ(run("export c.vtt -o c.ass -p " QZANNO_PALETTES "/high-contrast.plist").exitCode, 0);
    EXPECT_EQ(run("palette convert c.ass styles.plist").err, "");
    EXPECT_THAT(run("palette show styles.plist").out, HasSubstr("Noto Sans-Bold 76  #ffee00"));
    EXPECT_EQ(run("render c.ass -p styles.plist -o theirs --strict").err, "");
}

}  // namespace
}  // namespace qz
