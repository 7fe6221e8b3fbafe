#include <gmock/gmock.h>

#include "tests/qzanno/Tool.h"

namespace qz {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;

class PaletteCommandTest : public ToolTest {};

TEST_F(PaletteCommandTest, ShowsTheHighestPriorityFirstAndTheGlobalAnnotationLast) {
    const std::string missing = "<key>Full FontName as NSString</key><string>No Such Font</string>";
    write("p.plist", paletteFile(kWhiteText, annotation("Low", missing) + annotation("Höhe", "")));
    const ToolResult result = run("palette show p.plist");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
              "   NAME     FONT                    TEXT AND LAYERS  FRAME\n"
              "2  Höhe\n"
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
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2);

    const ToolResult sound = run("palette check " QZANNO_EXAMPLES "/broadcast.plist");
    EXPECT_EQ(sound.exitCode, 0);
    EXPECT_THAT(sound.err, IsEmpty());
}

TEST_F(PaletteCommandTest, AFileThatIsNoPaletteFailsBoth) {
    write("none.plist", "no XML at all");
    for (const char* command : {"palette show none.plist", "palette check none.plist", "palette show missing.plist"}) {
        SCOPED_TRACE(command);
        const ToolResult result = run(command);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
}

}  // namespace
}  // namespace qz
