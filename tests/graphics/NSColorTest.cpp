#include <cmath>
#include <cstdlib>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "tests/support/CodedAs.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

std::vector<float> componentsOf(const NSColor& color) {
    return {color.redComponent(), color.greenComponent(), color.blueComponent(), color.alphaComponent()};
}

TEST(NSColor, ComponentsAreClampedOnTheWayIn) {
    const auto color = NSColor::colorWithCalibratedRed(-3, 2, NAN, 0.25f);
    EXPECT_EQ(componentsOf(*color), (std::vector<float>{0, 1, 0, 0.25f}));
    const auto negativeZero = NSColor::colorWithCalibratedWhite(-0.0f, INFINITY);
    EXPECT_TRUE(negativeZero->isEqual(*NSColor::blackColor()));
    EXPECT_EQ(negativeZero->hash(), NSColor::blackColor()->hash()) << "equal colours hash alike";
}

TEST(NSColor, EqualityIsOfSpaceAndComponentsOrOfNames) {
    const auto name = [](const char* color) {
        return NSColor::colorWithCatalogName("System"_ns, NSString::stringWithUTF8String(color));
    };
    const auto red = NSColor::colorWithCalibratedRed(1, 0, 0, 1);
    EXPECT_TRUE(areEqual(red, NSColor::colorWithCalibratedRed(1, 0, 0, 1)));
    EXPECT_FALSE(areEqual(red, NSColor::colorWithCalibratedRed(1, 0, 0, 0.5f)));
    EXPECT_FALSE(areEqual(NSColor::blackColor(), NSColor::colorWithCalibratedRed(0, 0, 0, 1))) << "another space";
    EXPECT_TRUE(areEqual(name("textColor"), name("textColor")));
    EXPECT_EQ(name("textColor")->hash(), name("textColor")->hash());
    EXPECT_FALSE(areEqual(name("textColor"), name("labelColor"))) << "same components, other name";
    EXPECT_FALSE(areEqual(red, "red"_ns));
}

TEST(NSColor, Converts) {
    const auto grey = NSColor::colorWithCalibratedWhite(0.4f, 0.7f);
    const auto rgb = grey->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace);
    EXPECT_EQ(componentsOf(*rgb), (std::vector<float>{0.4f, 0.4f, 0.4f, 0.7f}));
    for (int level = 0; level < 256; ++level) {
        const auto white = NSColor::colorWithCalibratedWhite(float(level) / 255, 1);
        const auto back = white->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace)
                              ->colorUsingColorSpaceName(*NSCalibratedWhiteColorSpace);
        EXPECT_TRUE(areEqual(back, white)) << "grey " << level << " comes back to the bit";
    }
    EXPECT_EQ(rgb->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace), rgb) << "itself, not a copy";
    const auto green =
        NSColor::colorWithCalibratedRed(0, 1, 0, 1)->colorUsingColorSpaceName(*NSCalibratedWhiteColorSpace);
    EXPECT_FLOAT_EQ(green->redComponent(), 0.59f);
    EXPECT_EQ(grey->colorUsingColorSpaceName(*NSNamedColorSpace), nullptr);
    EXPECT_EQ(grey->colorUsingColorSpaceName(*"NSDeviceCMYKColorSpace"_ns), nullptr);
}

TEST(NSColor, NamedColoursKeepTheirNamesKnownOrNot) {
    const auto known = NSColor::colorWithCatalogName("System"_ns, "textBackgroundColor"_ns);
    EXPECT_EQ(known->colorSpaceName(), NSNamedColorSpace);
    EXPECT_EQ(componentsOf(*known), (std::vector<float>{1, 1, 1, 1}));
    EXPECT_TRUE(areEqual(known->colorUsingColorSpaceName(*NSCalibratedWhiteColorSpace), NSColor::whiteColor()));
    for (const auto& unknown :
         {NSColor::colorWithCatalogName("Crayons"_ns, "textColor"_ns),
          NSColor::colorWithCatalogName("System"_ns, "Ärger"_ns), NSColor::colorWithCatalogName({}, {})}) {
        EXPECT_EQ(componentsOf(*unknown), (std::vector<float>{0, 0, 0, 0}));
        EXPECT_EQ(unknown->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace), nullptr);
        ASSERT_NE(unknown->colorNameComponent(), nullptr);
    }
    EXPECT_EQ(NSColor::colorWithCatalogName("Crayons"_ns, "Ärger"_ns)->description(),
              "NSNamedColorSpace Crayons Ärger");
    EXPECT_EQ(NSColor::whiteColor()->catalogNameComponent(), nullptr);
}

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

// A list of colours that another program wrote; it is not part of this tree.
TEST(NSColorCoding, ReadsAndWritesAColourListOfAnotherProgram) {
    const char* const folder = std::getenv("QZANNO_SAMPLES");
    if (!folder) GTEST_SKIP() << "QZANNO_SAMPLES names no folder of typed streams";
    const std::string bytes = readText(std::string(folder) + "/apple-ii.clr");
    const auto unarchiver = NSUnarchiver::initForReadingWithData(NSData::dataWithBytes(std::string_view(bytes)));
    const Ref<NSArchiver> copy = NSArchiver::init();
    Ref<NSObject> none, color, name;
    int32_t count = 0;
    EXPECT_EQ(unarchiver->decodeInt(), 1);
    ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("@i", {&none, &count})) << unarchiver->error();
    copy->encodeInt(1);
    copy->encodeValuesOfObjCTypes("@i", {none, count});
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("@@", {&color, &name})) << unarchiver->error();
        copy->encodeValuesOfObjCTypes("@@", {color, name});
        if (name->description() != "#d968ff") continue;
        const auto violet = componentsOf(dynamic_cast<const NSColor&>(*color));
        EXPECT_NEAR(violet[0], 0.807269, 1e-6);
        EXPECT_NEAR(violet[1], 0.324494, 1e-6);
        EXPECT_NEAR(violet[2], 0.059086, 1e-6);
    }
    EXPECT_EQ(count, 15);
    EXPECT_TRUE(unarchiver->isAtEnd());
    EXPECT_EQ(copy->archiverData()->view(), bytes);
}

}  // namespace
}  // namespace qz
