#include <gmock/gmock.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

// Taken while statics are made, before any test runs.
const Ref<NSString> textColorAttributeAtStart = QzTextColorAttribute;
const Ref<NSObject> convertedAtStart = dehydrate(NSColor::blackColor());

Ref<NSDictionary> dictionary(std::initializer_list<std::pair<const char*, Ref<NSObject>>> entries) {
    ObjectMap map;
    for (const auto& [key, value] : entries) map.set(NSString::stringWithUTF8String(key), value);
    return NSDictionary::dictionaryWithMap(std::move(map));
}

Ref<NSNumber> real(float value) {
    return NSNumber::numberWithFloat(value);
}

TEST(ValueConversionTest, ColoursBecomeTaggedDictionariesAndComeBack) {
    const auto named = NSColor::colorWithCatalogName("Some catalogue"_ns, "Some colour"_ns);
    const auto rgb = NSColor::colorWithCalibratedRed(0.25f, 0.5f, 0.1f, 1);
    const auto white = NSColor::colorWithCalibratedWhite(0.5f, 0.75f);
    const struct {
        Ref<NSColor> color, returned;
        Ref<NSDictionary> stored;
    } cases[] = {
        {named, named,
         dictionary({{"Object Name", "NSColor Named"_ns},
                     {"CatalogName", "Some catalogue"_ns},
                     {"ColorName", "Some colour"_ns}})},
        {rgb, rgb,
         dictionary({{"Object Name", "NSColor RGBCalibrated"_ns},
                     {"Red", real(0.25f)},
                     {"Green", real(0.5f)},
                     {"Blue", real(0.1f)},
                     {"Alpha", real(1)}})},
        {white, NSColor::colorWithCalibratedRed(0.5f, 0.5f, 0.5f, 0.75f),
         dictionary({{"Object Name", "NSColor RGBCalibrated"_ns},
                     {"Red", real(0.5f)},
                     {"Green", real(0.5f)},
                     {"Blue", real(0.5f)},
                     {"Alpha", real(0.75f)}})},
    };
    for (const auto& row : cases) {
        const auto stored = std::dynamic_pointer_cast<NSDictionary>(dehydrate(row.color));
        ASSERT_TRUE(stored);
        EXPECT_TRUE(stored->isEqual(*row.stored)) << stored->description();
        EXPECT_TRUE(areEqual(rehydrate(stored), row.returned));
    }
    EXPECT_TRUE(convertedAtStart && textColorAttributeAtStart->isEqualToString(*NSForegroundColorAttributeName));
}

TEST(ValueConversionTest, BoxAppearancesAddPrefixAndType) {
    const auto color = NSColor::colorWithCatalogName("System"_ns, "controlColor"_ns);
    const auto stored = safeBGBox(*QzBBoxInfo::qzbbWithColor(color, 1));
    EXPECT_TRUE(stored->isEqual(*dictionary({{"Object Name", "BBox with NSColor Named"_ns},
                                             {"CatalogName", "System"_ns},
                                             {"ColorName", "controlColor"_ns},
                                             {"bbtype", NSNumber::numberWithInt(1)}})));
    const auto box = std::dynamic_pointer_cast<QzBBoxInfo>(rehydrate(stored));
    ASSERT_TRUE(box);
    EXPECT_EQ(box->type(), 1);
    EXPECT_TRUE(box->color()->isEqual(*color));
    EXPECT_FALSE(box->isEqual(*box->copy())) << "appearances are equal by identity";
    EXPECT_FALSE(QzBBoxInfo::initWithColor({}, 1));
    EXPECT_EQ(genBGBox(*dictionary({{"Object Name", "BBox with NSColor RGBCalibrated"_ns}}))->type(), 0);
}

TEST(ValueConversionTest, OtherDictionariesStayThemselves) {
    const Ref<NSDictionary> others[] = {
        dictionary({}),
        dictionary({{"Object Name", "BBox with "_ns}}),
        dictionary({{"Object Name", "BBox with Something"_ns}}),
        dictionary({{"Object Name", "BBox with BBox with NSColor RGBCalibrated"_ns}}),
        dictionary({{"Object Name", "nscolor rgbcalibrated"_ns}}),
        dictionary({{"Object Name", real(1)}}),
        dictionary({{"Object Name", "NSColor Named"_ns}, {"CatalogName", "no colour name"_ns}}),
        dictionary({{"Object Name", "NSColor Named"_ns}, {"CatalogName", real(1)}, {"ColorName", real(2)}}),
    };
    for (const Ref<NSDictionary>& other : others) EXPECT_EQ(rehydrate(other), other) << other->description();
}

TEST(ValueConversionTest, HostileComponentsStayWithinTheirRange) {
    const auto color =
        genColor(*dictionary({{"Object Name", "NSColor RGBCalibrated"_ns},
                              {"Red", real(7)},
                              {"Green", "0.5"_ns},
                              {"Blue", NSNumber::numberWithDouble(std::numeric_limits<double>::quiet_NaN())}}));
    ASSERT_TRUE(color);
    EXPECT_EQ(color->redComponent(), 1);
    EXPECT_EQ(color->greenComponent(), 0.5f) << "written as text";
    EXPECT_EQ(color->blueComponent(), 0);
    EXPECT_EQ(color->alphaComponent(), 0) << "a missing component is 0";
}

}  // namespace
}  // namespace qz
