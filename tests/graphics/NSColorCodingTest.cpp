#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/NSArchiver.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSUnarchiver.h"
#include "platform/graphics/NSColor.h"
#include "tests/support/CodedAs.h"

namespace qz {
namespace {

// Of a colour object with a tag and one more group.
Ref<NSColor> decoded(int32_t tag, std::string_view types, std::initializer_list<CodedValue> values,
                     std::string* error = nullptr) {
    const auto groups = [&](NSArchiver& archiver) {
        archiver.encodeValueOfObjCType("c", tag);
        archiver.encodeValuesOfObjCTypes(types, values);
    };
    return std::dynamic_pointer_cast<NSColor>(
        NSUnarchiver::unarchiveObjectWithData(test::codedAs("NSColor", groups), error));
}

TEST(NSColorCoding, EveryKindIsReadBackAsItself) {
    const Ref<NSColor> colors[] = {
        NSColor::colorWithCalibratedRed(0.1f, 0.25f, 1, 0.75f),
        NSColor::colorWithCalibratedWhite(0.3f, 0),
        NSColor::colorWithCatalogName("System"_ns, "gridColor"_ns),
        NSColor::colorWithCatalogName("Somebody's"_ns, "mauve"_ns),
    };
    for (const Ref<NSColor>& color : colors) {
        std::string error;
        const Ref<NSObject> read =
            NSUnarchiver::unarchiveObjectWithData(NSArchiver::archivedDataWithRootObject(color, &error), &error);
        ASSERT_TRUE(read) << error;
        EXPECT_TRUE(read->isEqual(*color)) << read->description() << " for " << color->description();
    }
}

TEST(NSColorCoding, OtherSpacesAreConverted) {
    struct Case {
        int32_t tag;
        const char* types;
        std::initializer_list<CodedValue> values;
        Ref<NSColor> expected;
    };
    const Case cases[] = {
        {2, "ffff", {0.25, 0.5, 0.75, 1.0}, NSColor::colorWithCalibratedRed(0.25f, 0.5f, 0.75f, 1)},
        {4, "ff", {0.25, 0.5}, NSColor::colorWithCalibratedWhite(0.25f, 0.5f)},
        // Half the ink of cyan on paper that half the black darkens.
        {5, "fffff", {0.5, 0.0, 1.0, 0.5, 1.0}, NSColor::colorWithCalibratedRed(0.25f, 0.5f, 0, 1)},
        {1, "ffff", {7.0, -1.0, 0.5, 1.0}, NSColor::colorWithCalibratedRed(1, 0, 0.5f, 1)},
    };
    for (const auto& [tag, types, values, expected] : cases) {
        std::string error;
        const Ref<NSColor> color = decoded(tag, types, values, &error);
        ASSERT_TRUE(color) << tag << ": " << error;
        EXPECT_TRUE(color->isEqual(*expected)) << tag << ": " << color->description();
    }
}

TEST(NSColorCoding, ANameUnknownHereTakesTheColourThatComesWithIt) {
    const Ref<NSColor> grey = NSColor::colorWithCalibratedWhite(0.5f, 1);
    const Ref<NSColor> unknown = decoded(6, "@@@", {"Somebody's"_ns, "mauve"_ns, grey});
    ASSERT_TRUE(unknown);
    EXPECT_TRUE(unknown->isEqual(*grey));
    const Ref<NSColor> known = decoded(6, "@@@", {"System"_ns, "textColor"_ns, grey});
    ASSERT_TRUE(known);
    EXPECT_TRUE(known->isEqual(*NSColor::colorWithCatalogName("System"_ns, "textColor"_ns)));
}

TEST(NSColorCoding, RefusesOtherKinds) {
    std::string error;
    EXPECT_FALSE(decoded(7, "f", {0.5}, &error));
    EXPECT_THAT(error, testing::HasSubstr("a colour of the kind 7"));
    EXPECT_FALSE(decoded(1, "ff", {0.5, 1.0}, &error));
    EXPECT_FALSE(decoded(6, "@@@", {"System"_ns, NSArray::array(), Ref<NSObject>()}, &error));
    EXPECT_THAT(error, testing::HasSubstr("a named colour needs"));
}

TEST(NSColorCoding, ReadsAColourListOfAnotherProgram) {
    const char* const folder = std::getenv("QZANNO_SAMPLES");
    if (!folder) GTEST_SKIP() << "QZANNO_SAMPLES names no folder of typed streams";
    std::ifstream file(std::filesystem::path(folder) / "apple-ii.clr", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const auto unarchiver = NSUnarchiver::initForReadingWithData(NSData::dataWithBytes(std::string_view(bytes)));
    Ref<NSObject> none = NSArray::array();
    int32_t count = 0;
    EXPECT_EQ(unarchiver->decodeInt(), 1);
    ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("@i", {&none, &count})) << unarchiver->error();
    EXPECT_FALSE(none);
    ASSERT_EQ(count, 15);
    const Ref<NSArchiver> copy = NSArchiver::init();
    copy->encodeInt(1);
    copy->encodeValuesOfObjCTypes("@i", {Ref<NSObject>(), count});
    std::vector<std::string> names;
    Ref<NSObject> color, name;
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("@@", {&color, &name})) << unarchiver->error();
        copy->encodeValuesOfObjCTypes("@@", {color, name});
        names.push_back(name->description());
        if (i != 3) continue;
        const auto* const violet = dynamic_cast<const NSColor*>(color.get());
        ASSERT_TRUE(violet);
        EXPECT_NEAR(violet->redComponent(), 0.807269, 1e-6);
        EXPECT_NEAR(violet->greenComponent(), 0.324494, 1e-6);
        EXPECT_NEAR(violet->blueComponent(), 0.059086, 1e-6);
    }
    EXPECT_TRUE(unarchiver->isAtEnd());
    names.resize(5);
    EXPECT_THAT(names, testing::ElementsAre("#000", "#808080", "#fff", "#d968ff", "#404b77"));
    EXPECT_EQ(copy->archiverData()->view(), bytes);
}

}  // namespace
}  // namespace qz
