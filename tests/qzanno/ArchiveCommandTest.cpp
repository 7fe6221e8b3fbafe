#include <gmock/gmock.h>

#include "tests/qzanno/Tool.h"

namespace qz {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kPalette = QZANNO_EXAMPLES "/broadcast.plist";

class ArchiveCommandTest : public ToolTest {
protected:
    void SetUp() override {
        write("c.vtt",
              "WEBVTT\n\n00:01.000 --> 00:02.000\n<c.Speaker>ADA:</c> weaves\npatterns\n\n"
              "00:03.000 --> 00:04.000\nplain\n");
        ASSERT_EQ(run(std::string("archive pack c.vtt -o c.annostring -p ") + kPalette).exitCode, 0);
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
    const ToolResult resolved = run(std::string("archive show c.annostring -p ") + kPalette);
    EXPECT_THAT(resolved.out, HasSubstr("  0-4  Speaker\n      Noto Sans Bold 64\n      #ffd933; leading 6;"));
    EXPECT_THAT(resolved.err, IsEmpty());
}

TEST_F(ArchiveCommandTest, ATitleLooksTheSameFromAnArchive) {
    const std::string rest = std::string(" -s 640x360 -p ") + kPalette;
    EXPECT_EQ(run("render c.vtt -o direct" + rest).exitCode, 0);
    EXPECT_EQ(run(std::string("palette convert ") + kPalette + " p.annopalette").exitCode, 0);
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
}

TEST_F(ArchiveCommandTest, AnnotationsThatThePaletteLacksAreNamed) {
    const ToolResult lax = run("render c.annostring -o pictures -s 64x36");
    EXPECT_EQ(lax.exitCode, 0);
    EXPECT_THAT(lax.err, HasSubstr("qzanno: c.annostring: there is no annotation \"Speaker\" in the palette"));
    const ToolResult strict = run("render c.annostring -o none -s 64x36 --strict");
    EXPECT_EQ(strict.exitCode, 1);
    EXPECT_FALSE(exists("none"));
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
         {Case{"archive show p.annopalette", "class QzAnnoPalette, no annotated strings"},
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

}  // namespace
}  // namespace qz
