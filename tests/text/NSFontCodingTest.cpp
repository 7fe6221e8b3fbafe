#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/NSArchiver.h"
#include "platform/foundation/NSUnarchiver.h"
#include "platform/text/NSFont.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Ref<NSFont> decodedFont(std::string_view block, float size, std::string* error = nullptr) {
    const auto groups = [&](NSArchiver& archiver) {
        archiver.encodeInt(static_cast<int32_t>(block.size()));
        archiver.encodeValueOfObjCType("[" + std::to_string(block.size()) + "c]", block);
        archiver.encodeFloat(size);
        for (const int32_t unknown : {0, 1, 0, 14}) archiver.encodeValueOfObjCType("c", unknown);
    };
    return std::dynamic_pointer_cast<NSFont>(
        NSUnarchiver::unarchiveObjectWithData(test::codedAs("NSFont", groups), error));
}

TEST(NSFontCoding, IsReadBackAsTheSameFont) {
    const Ref<NSFont> font = NSFont::fontWithName(*"DejaVuSans-Bold"_ns, 40.5f);
    ASSERT_TRUE(font);
    const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(font);
    // The name's block: kind 6, 32 bytes of UTF-16 with its mark, no padding.
    const std::string block(
        "\x06\0\0\0\x20\0\0\0\xff\xfe"
        "D\0e\0j\0a\0V\0u\0",
        22);
    EXPECT_THAT(std::string(data->view()), HasSubstr("[40c]" + block));
    const Ref<NSObject> read = NSUnarchiver::unarchiveObjectWithData(data);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEqual(*font)) << read->description();
}

TEST(NSFontCoding, NamesOfEitherByteOrderAndWithPadding) {
    for (const std::string& block : {std::string("\6\0\0\0\x16\0\0\0\xff\xfe"
                                                 "D\0e\0j\0a\0V\0u\0S\0a\0n\0s\0\0\0",
                                                 32),
                                     std::string("\6\0\0\0\x16\0\0\0\xfe\xff\0D\0e\0j\0a\0V\0u\0S\0a\0n\0s\0\0", 32)}) {
        std::string error;
        const Ref<NSFont> font = decodedFont(block, 12, &error);
        ASSERT_TRUE(font) << error;
        EXPECT_EQ(font->fontName()->utf8(), "DejaVuSans");
        EXPECT_EQ(font->pointSize(), 12);
    }
}

TEST(NSFontCoding, AFontThatIsNotInstalledBecomesTheTitleBarFontAndIsLogged) {
    test::LogCapture log;
    const std::string block("\6\0\0\0\x06\0\0\0\xff\xfeZ\0q\0\0\0", 16);
    const Ref<NSFont> font = decodedFont(block, 31);
    ASSERT_TRUE(font);
    EXPECT_TRUE(font->isEqual(*NSFont::titleBarFontOfSize(31)));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("\"Zq\" at 31 points")));
    // A size that no font can have.
    EXPECT_TRUE(decodedFont(std::string("\6\0\0\0\x16\0\0\0\xff\xfe"
                                        "D\0e\0j\0a\0V\0u\0S\0a\0n\0s\0\0\0",
                                        32),
                            INFINITY));
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST(NSFontCoding, DamagedNamesAreRefused) {
    for (const std::string& block :
         {std::string(), std::string("\6\0\0\0", 4), std::string("\7\0\0\0\2\0\0\0\xff\xfe", 10),
          std::string("\6\0\0\0\4\0\0\0\xff\xfe", 10), std::string("\6\0\0\0\2\0\0\0\xff\xfe", 10),
          std::string("\6\0\0\0\3\0\0\0\xff\xfe"
                      "a\0",
                      12),
          std::string("\6\0\0\0\xff\xff\xff\xff\xff\xfe", 10)}) {
        std::string error;
        EXPECT_FALSE(decodedFont(block, 12, &error)) << block.size();
        EXPECT_THAT(error, HasSubstr("the name of a font"));
    }
}

}  // namespace
}  // namespace qz
