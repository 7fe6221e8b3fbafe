#include <gmock/gmock.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno_AnnotatedTextFramework/palette/PaletteFaults.h"
#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A palette with a value of every storable kind, and a name that needs escaping.
Ref<QzAnnoPalette> richPalette() {
    const Ref<QzAnnoPalette> palette =
        test::paletteWithGlobals({{QzFontSizeAttribute, test::number(12.1)},
                                  {QzTextColorAttribute, NSColor::colorWithCalibratedRed(0.1f, 0.5f, 1, 1)}});
    ObjectMap other;
    other.set("Object Name"_ns, "unknown"_ns);
    const auto box = QzBBoxInfo::qzbbWithColor(NSColor::colorWithCatalogName("System"_ns, "textColor"_ns), 2);
    for (const test::Attributes& attributes :
         {test::Attributes{{QzHorizontalAlignmentAttribute, test::integer(2)},
                           {QzItalicAttribute, test::integer(1)},
                           {QzBoundingMarginsAttribute, test::margins(1, 2.5, 3, 4)},
                           {QzBoundingBoxAttribute, "{{0.1, 0.2}, {0.5, 0.25}}"_ns},
                           {QzTextBoundingBoxAppearanceAttribute, box},
                           {"data"_ns, NSData::dataWithBytes(std::vector<uint8_t>{0, 255})},
                           {"other"_ns, NSDictionary::dictionaryWithMap(other)}},
          test::Attributes()})
        test::addAnnotation(*palette, "Größe <&> 🎬", attributes);
    return palette;
}

class PalettePropertyListTest : public testing::Test {
protected:
    /// The palette whose list is `content`, between the tags of a property list.
    Ref<QzAnnoPalette> read(const std::string& content) {
        capture_.clear();
        error_.clear();
        return QzAnnoPalette::paletteFromPListData(
            *NSData::dataWithBytes("<plist version=\"1.0\">" + content + "</plist>"), &error_);
    }

    test::LogCapture capture_;
    std::string error_;
};

TEST_F(PalettePropertyListTest, WhatIsWrittenReadsBackWholeAndLocked) {
    const auto data = richPalette()->pListData();
    ASSERT_TRUE(data);
    // Values that other programs' files have under these names.
    for (const char* element :
         {"<key>FontSize as NSNumber(float)</key>\n\t\t\t<real>12.1</real>",
          "<key>Object Name</key>\n\t\t\t\t<string>NSColor RGBCalibrated</string>",
          "<key>__Annotation Name</key>\n\t\t\t<string>Größe &lt;&amp;&gt; 🎬</string>",
          "<key>Horizontal Alignment as NSNumber(int)</key>\n\t\t\t<integer>2</integer>",
          "<key>Italic as NSNumber(bool)</key>\n\t\t\t<integer>1</integer>",
          "<key>BoundingMargins as NSArray of Numbers left,right,top,bottom</key>\n\t\t\t<array>",
          "<key>BoundingBox as NSRect</key>\n\t\t\t<string>{{0.1, 0.2}, {0.5, 0.25}}</string>",
          "<key>QzTextBoundingBoxAppearance as QzBBoxInfo</key>\n\t\t\t<dict>",
          "<string>BBox with NSColor Named</string>", "<key>bbtype</key>\n\t\t\t\t<integer>2</integer>",
          "<key>Version</key>\n\t<integer>0</integer>"}) {
        EXPECT_THAT(std::string(data->view()), HasSubstr(element));
    }
    const auto again = QzAnnoPalette::paletteFromPListData(*data);
    ASSERT_TRUE(again);
    EXPECT_FALSE(again->editable());
    EXPECT_EQ(again->maxPriority(), 2);
    EXPECT_TRUE(again->annoKeyAtPriority(0)->isDefault());
    const auto anno = again->lookupAnno(again->annoKeyAtPriority(1));
    EXPECT_TRUE(anno->allAttributes()->objectForKey<QzBBoxInfo>(*QzTextBoundingBoxAppearanceAttribute));
    EXPECT_TRUE(again->lookupAnno({})->allAttributes()->objectForKey<NSColor>(*QzTextColorAttribute));
    EXPECT_TRUE(anno->allAttributes()->objectForKey<NSDictionary>(*"other"_ns));
    EXPECT_EQ(again->pListData()->view(), data->view());
    EXPECT_THAT(capture_.lines(), IsEmpty());
}

TEST_F(PalettePropertyListTest, TopLevelsThatAreAccepted) {
    const std::string title = "<dict><key>__Annotation Name</key><string>Title</string></dict>";
    const std::string global = "<dict><key>x</key><integer>1</integer></dict>";
    for (const std::string& content :
         {"<array>" + global + title + "</array>",
          "<dict><key>Palette</key><array>" + global + title + "</array></dict>",
          "<dict><key>Version</key><string>0</string><key>Palette</key><array>" + global + title + "</array></dict>"}) {
        const auto palette = read(content);
        ASSERT_TRUE(palette) << error_;
        EXPECT_EQ(palette->maxPriority(), 1);
        EXPECT_EQ(palette->lookupPrio(palette->findAnnoKey("Title"_ns)), 1);
        EXPECT_TRUE(palette->lookupAnno({})->attribute(*"x"_ns));
    }
    size_t changes = 0;
    NSNotificationCenter::defaultCenter().addObserver(
        &changes, [&](const NSNotification&) { ++changes; }, QzAnnoChanged, nullptr);
    EXPECT_EQ(read("<array/>")->maxPriority(), 0);
    NSNotificationCenter::defaultCenter().removeObserver(&changes);
    EXPECT_EQ(changes, 1u) << "that of the global annotation";
    EXPECT_THAT(capture_.lines(), IsEmpty());
}

TEST_F(PalettePropertyListTest, WhatIsNoPaletteIsRefused) {
    const struct {
        const char* content;
        bool isLogged;
        const char* error;
    } cases[] = {
        {"<dict><key>Version</key><integer>1</integer><key>Palette</key><array/></dict>", false, "version"},
        {"<dict><key>Version</key><integer>4294967296</integer><key>Palette</key><array/></dict>", false, "version"},
        {"<dict><key>Version</key><string>1</string><key>Palette</key><array/></dict>", false, "version"},
        {"<string>palette</string>", false, "found NSString"},
        {"<dict/>", true, "no array under \"Palette\""},
        {"<dict><key>Palette</key><dict/></dict>", true, "no array under \"Palette\""},
        {"<array><dict/><string>x</string></array>", true, "element 1 of the palette"},
        {"<array><dict>", true, "line 1"},
        {"", true, "line 1"},
    };
    for (const auto& row : cases) {
        EXPECT_FALSE(read(row.content)) << row.content;
        EXPECT_THAT(error_, HasSubstr(row.error));
        std::vector<std::string> log;
        if (row.isLogged) log.push_back("Error reading palette plist: " + error_ + "\n");
        EXPECT_EQ(capture_.lines(), log) << row.content;
    }
}

TEST_F(PalettePropertyListTest, NamesMayBeMissingRepeatedOrOfAnotherKind) {
    const auto named = [](const std::string& value) {
        return "<dict><key>__Annotation Name</key>" + value + "</dict>";
    };
    auto palette = read("<array>" + named("<string>Base</string>") + "<dict/><dict/>" + named("<integer>7</integer>") +
                        named("<string>GLOBALS</string>") + "</array>");
    ASSERT_TRUE(palette);
    EXPECT_EQ(palette->annoKeyAtPriority(0)->name()->utf8(), "Base");
    EXPECT_EQ(palette->maxPriority(), 4);
    for (int32_t priority : {1, 2, 3}) EXPECT_EQ(palette->annoKeyAtPriority(priority)->name()->utf8(), "Fark new");
    EXPECT_EQ(palette->lookupAnno(palette->annoKeyAtPriority(3))->attributeNames()->count(), 0u);
    EXPECT_EQ(palette->lookupPrio(palette->findAnnoKey("GLOBALS"_ns)), 4);
    EXPECT_THAT(capture_.lines(), ElementsAre(HasSubstr("NSNumber")));

    // The temporary name of a new annotation may be the global one's.
    palette = read("<array>" + named("<string>Fark new</string>") + named("<string>Title</string>") + "</array>");
    ASSERT_TRUE(palette);
    EXPECT_EQ(palette->maxPriority(), 1);
}

TEST_F(PalettePropertyListTest, ManyAttributesAndAnnotationsLoadInLinearTime) {
    std::string attributes;
    for (int i = 0; i < 50000; ++i) attributes += "<key>k" + std::to_string(i) + "</key><true/>";
    std::string list = "<array><dict>" + attributes + "</dict>";
    for (int i = 0; i < 50000; ++i) list += "<dict/>";
    const auto palette = read(list + "</array>");
    ASSERT_TRUE(palette);
    EXPECT_EQ(palette->lookupAnno({})->attributeNames()->count(), 50000u);
    EXPECT_EQ(palette->maxPriority(), 50000);
}

TEST_F(PalettePropertyListTest, WhatCannotBeStoredFailsTheWholeWriteByName) {
    Ref<NSObject> deep = "x"_ns;
    for (int i = 0; i < 600; ++i) deep = NSArray::arrayWithObjects({deep});
    const struct {
        Ref<NSString> attribute;
        Ref<NSObject> value;
    } cases[] = {
        {"Set"_ns, NSSet::set()},
        {"Nested"_ns, NSArray::arrayWithObjects({NSColor::blackColor()})},
        {"Deep"_ns, deep},
        {"Control"_ns, NSString::stringWithUTF8String("a\x01"
                                                      "b")},
        {QzAnnoPalette_AnnotationNameKey, "would rename it"_ns},
        {"Empty"_ns, {}},
    };
    for (const auto& row : cases) {
        const auto palette = richPalette();
        const auto edited = palette->lookupAnno(palette->annoKeyAtPriority(1))->mutableCopy();
        edited->setName("Lower Third"_ns);
        ObjectMap attributes = edited->allAttributes()->map();
        attributes.set(row.attribute, row.value);
        edited->setAttributes(NSDictionary::dictionaryWithMap(attributes));
        palette->replaceAnno(edited);
        capture_.clear();
        EXPECT_FALSE(palette->pListData());
        EXPECT_THAT(capture_.lines(), ElementsAre(testing::AllOf(
                                          testing::StartsWith("Error occurred serializing palette: \"Lower Third\": "),
                                          HasSubstr(row.attribute->utf8()))));
    }
}

// Taken while statics are made, before any test runs.
const Ref<NSString> textColorAttributeAtStart = QzTextColorAttribute;
const Ref<NSObject> convertedAtStart = dehydrate(NSColor::blackColor());

Ref<NSDictionary> dictionary(std::initializer_list<std::pair<const char*, Ref<NSObject>>> entries) {
    ObjectMap map;
    for (const auto& [key, value] : entries) map.set(NSString::stringWithUTF8String(key), value);
    return NSDictionary::dictionaryWithMap(std::move(map));
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
                     {"Red", test::number(0.25f)},
                     {"Green", test::number(0.5f)},
                     {"Blue", test::number(0.1f)},
                     {"Alpha", test::number(1)}})},
        {white, NSColor::colorWithCalibratedRed(0.5f, 0.5f, 0.5f, 0.75f),
         dictionary({{"Object Name", "NSColor RGBCalibrated"_ns},
                     {"Red", test::number(0.5f)},
                     {"Green", test::number(0.5f)},
                     {"Blue", test::number(0.5f)},
                     {"Alpha", test::number(0.75f)}})},
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
        dictionary({{"Object Name", test::number(1)}}),
        dictionary({{"Object Name", "NSColor Named"_ns}, {"CatalogName", "no colour name"_ns}}),
        dictionary(
            {{"Object Name", "NSColor Named"_ns}, {"CatalogName", test::number(1)}, {"ColorName", test::number(2)}}),
    };
    for (const Ref<NSDictionary>& other : others) EXPECT_EQ(rehydrate(other), other) << other->description();
}

TEST(ValueConversionTest, HostileComponentsStayWithinTheirRange) {
    const auto color =
        genColor(*dictionary({{"Object Name", "NSColor RGBCalibrated"_ns},
                              {"Red", test::number(7)},
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
