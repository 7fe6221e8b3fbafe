#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using namespace test;

class FormatterTest : public testing::Test {
protected:
    FormatterTest() { formatter->setPalette(palette); }

    Ref<NSAttributedString> format(const Ref<NSObject>& string) const {
        return formatter->attributedStringForObjectValue(string);
    }

    Ref<NSObject> valueAt(const NSAttributedString& text, uint32_t index, const Ref<NSString>& name) const {
        return text.attributesAtIndex(index)->objectForKey(*name);
    }

    LogCapture log;
    Ref<QzAnnoPalette> palette = paletteWithGlobals({{QzFontSizeAttribute, number(40)}});
    Ref<QzAnnoStringFormatter> formatter = QzAnnoStringFormatter::init();
};

TEST_F(FormatterTest, EveryRunHasTheAttributesOfItsAnnotations) {
    const auto red = rgba(1, 0, 0);
    const auto blue = rgba(0, 0, 1);
    const Ref<QzAnnoKey> low =
        addAnnotation(*palette, "low", {{QzTextColorAttribute, red}, {QzFontSizeAttribute, number(50)}});
    const Ref<QzAnnoKey> high = addAnnotation(*palette, "high", {{QzTextColorAttribute, blue}});
    const auto string = QzMutableAnnoString::initWithString("abcdef"_ns);
    string->addAnno(low, {1, 4});
    string->addAnno(high, {3, 2});

    const Ref<NSAttributedString> text = format(string);
    ASSERT_EQ(text->characters(), u"abcdef");
    const struct {
        uint32_t index;
        Ref<NSColor> color;
        float size;
        Ref<NSSet> keys;
    } cases[] = {
        {0, nullptr, 40, NSSet::set()},
        {1, red, 50, NSSet::setWithObject(low)},
        {3, blue, 50, NSSet::setWithObjects<QzAnnoKey>({low, high})},  // the higher priority has the colour
        {5, nullptr, 40, NSSet::set()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        EXPECT_EQ(valueAt(*text, c.index, QzTextColorAttribute), c.color);
        EXPECT_EQ(std::dynamic_pointer_cast<NSFont>(valueAt(*text, c.index, NSFontAttributeName))->pointSize(), c.size);
        EXPECT_TRUE(areEqual(valueAt(*text, c.index, QzAnnoAttributeName), c.keys));
        EXPECT_TRUE(areEqual(valueAt(*text, c.index, QzFrameAnnoAttributeName), NSSet::set()));
    }
}

TEST_F(FormatterTest, FrameAttributesComeOnlyFromTheGlobalAndTheFrameAnnotations) {
    const auto ofGlobal = "{{0, 0}, {1, 1}}"_ns;
    const auto ofPart = "{{0.5, 0}, {0.5, 1}}"_ns;
    const Ref<QzAnnoKey> part =
        addAnnotation(*palette, "part", {{QzBoundingBoxAttribute, ofPart}, {QzVerticalAlignmentAttribute, integer(1)}});
    const Ref<QzAnnoKey> whole = addAnnotation(*palette, "whole", {{QzVerticalAlignmentAttribute, integer(2)}});
    const auto string = QzMutableAnnoString::initWithString("abcdef"_ns);
    string->addAnno(part, {0, 3});

    Ref<NSAttributedString> text = format(string);
    for (uint32_t i : {0u, 5u}) EXPECT_FALSE(valueAt(*text, i, QzBoundingBoxAttribute)) << i;

    giveAttributes(*palette, palette->lookupAnno({}), {{QzBoundingBoxAttribute, ofGlobal}});
    string->addFrameAnno(whole);
    text = format(string);
    for (uint32_t i : {0u, 5u}) {
        EXPECT_EQ(valueAt(*text, i, QzBoundingBoxAttribute), ofGlobal) << i;
        EXPECT_TRUE(areEqual(valueAt(*text, i, QzVerticalAlignmentAttribute), integer(2))) << i;
        EXPECT_TRUE(areEqual(valueAt(*text, i, QzFrameAnnoAttributeName), NSSet::setWithObject(whole))) << i;
    }
}

TEST_F(FormatterTest, AnnotationsComeBackFromTheFormattedText) {
    std::vector<Ref<QzAnnoKey>> keys;
    for (const char* name : {"a", "b", "c"}) keys.push_back(addAnnotation(*palette, name, {}));
    const uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 engine(seed);
    const auto below = [&](uint32_t bound) { return std::uniform_int_distribution<uint32_t>(0, bound - 1)(engine); };
    for (int round = 0; round < 50; ++round) {
        const uint32_t length = below(40);
        const auto string =
            QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::u16string(length, u'x')));
        for (const Ref<QzAnnoKey>& key : keys) {
            for (int i = 0; i < 3 && length > 0; ++i) string->addAnno(key, {below(length), below(8)});
        }
        const auto back = QzMutableAnnoString::initWithKeyedAttributedString(*format(string));
        for (uint32_t i = 0; i < length; ++i) {
            // A run may reach past the text's end in the bit sets, but not in the strings' queries.
            ASSERT_TRUE(areEqual(string->annotationsAtIndex(i), back->annotationsAtIndex(i))) << i;
        }
    }
}

TEST_F(FormatterTest, ListModeShowsEveryRunInTheListsLooks) {
    const Ref<QzAnnoKey> loud =
        addAnnotation(*palette, "loud", {{QzTextColorAttribute, rgba(1, 0, 0)}, {QzFontSizeAttribute, number(90)}});
    const auto string = QzMutableAnnoString::initWithString("abcd"_ns);
    string->addAnno(loud, {0, 2});
    formatter->setListMode(true);

    const auto plain = NSMutableAttributedString::init();
    plain->appendString(u"ab", dictionaryOf({{NSFontAttributeName, NSFont::systemFontOfSize(70)}}));
    plain->appendString(u"cd", dictionaryOf({}));  // a run without a font

    for (const Ref<NSObject>& value : {Ref<NSObject>(string), Ref<NSObject>(plain)}) {
        const Ref<NSAttributedString> text = format(value);
        for (uint32_t i : {0u, 3u}) {
            SCOPED_TRACE(i);
            EXPECT_EQ(std::dynamic_pointer_cast<NSFont>(valueAt(*text, i, NSFontAttributeName))->pointSize(), 13);
            EXPECT_TRUE(areEqual(valueAt(*text, i, NSForegroundColorAttributeName), NSColor::blackColor()));
            EXPECT_FALSE(valueAt(*text, i, QzFrameAnnoAttributeName));
        }
    }
    const auto style =
        std::dynamic_pointer_cast<NSParagraphStyle>(valueAt(*format(string), 3, NSParagraphStyleAttributeName));
    EXPECT_EQ(style->values().minimumLineHeight, 15);
    EXPECT_EQ(style->values().maximumLineHeight, 15);
    EXPECT_EQ(style->alignment(), NSTextAlignment::center);
    EXPECT_TRUE(areEqual(valueAt(*plain, 0, NSFontAttributeName), NSFont::systemFontOfSize(70)))
        << "the original was changed";
}

TEST_F(FormatterTest, ValuesThatNeedNoFormatting) {
    const auto attributed = NSAttributedString::initWithString("ready"_ns);
    EXPECT_EQ(format(attributed), attributed);
    EXPECT_EQ(format(QzAnnoString::init())->length(), 0u);
    EXPECT_FALSE(format(number(1)));
    EXPECT_FALSE(format({}));

    const Ref<NSObject> seven = number(7);
    EXPECT_EQ(formatter->stringForObjectValue(seven), seven);
    EXPECT_TRUE(areEqual(formatter->stringForObjectValue(attributed), "ready"_ns));
    EXPECT_TRUE(areEqual(formatter->stringForObjectValue(QzAnnoString::initWithString("title"_ns)), "title"_ns));
}

TEST_F(FormatterTest, AFormatterWhosePaletteHasDiedFormatsNothing) {
    const auto string = QzAnnoString::initWithString("title"_ns);
    palette.reset();
    EXPECT_FALSE(formatter->palette());
    EXPECT_FALSE(format(string));
    EXPECT_FALSE(formatter->defaultAttributes());
}

TEST_F(FormatterTest, ThereIsNoWayBackFromText) {
    Ref<NSObject> object;
    std::string error = "untouched";
    log.clear();
    EXPECT_FALSE(formatter->getObjectValue(object, "plain"_ns, &error));
    EXPECT_FALSE(object);
    EXPECT_EQ(log.errors().size(), 1u);

    EXPECT_TRUE(formatter->getObjectValue(object, NSAttributedString::initWithString("rich"_ns), &error));
    EXPECT_TRUE(areEqual(object, "flurble flurble flounder"_ns));
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(error, "untouched");
}

TEST_F(FormatterTest, LineFeedsBecomeMarkersInPlace) {
    const Ref<QzAnnoKey> key = addAnnotation(*palette, "key", {});
    const auto annotated = QzMutableAnnoString::initWithString("a\nb\n"_ns);
    annotated->addAnno(key, {1, 1});
    QzAnnoStringFormatter::replaceNewlineWithParagraphMarkers(*annotated);
    EXPECT_EQ(annotated->string()->characters(), u"a\u204Bb\u204B");
    EXPECT_TRUE(annotated->annotation(key, 1));
    EXPECT_FALSE(annotated->annotation(key, 3));

    const auto attributed = NSMutableAttributedString::init();
    attributed->appendString(u"no feed", NSDictionary::dictionary());
    QzAnnoStringFormatter::replaceNewlineWithParagraphMarkers(*attributed);
    EXPECT_EQ(attributed->characters(), u"no feed");
}

}  // namespace
}  // namespace qz
