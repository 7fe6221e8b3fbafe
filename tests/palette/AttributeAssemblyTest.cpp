#include <limits>

#include <gmock/gmock.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using test::Attributes;

Ref<NSNumber> number(double value) {
    return NSNumber::numberWithDouble(value);
}

class AttributeAssemblyTest : public testing::Test {
protected:
    AttributeAssemblyTest() { palette_->setUndoManager(NSUndoManager::init()); }

    Ref<QzAnnoKey> annotation(const char* name, const Attributes& attributes) {
        const auto key = palette_->createAnno(NSString::stringWithUTF8String(name))->annokey();
        palette_->replaceAnno(QzAnno::initWithKey(key, test::dictionaryOf(attributes)));
        return key;
    }

    void setGlobals(const Attributes& attributes) {
        palette_->replaceAnno(QzAnno::initWithKey(palette_->annoKeyAtPriority(0), test::dictionaryOf(attributes)));
    }

    Ref<NSDictionary> assembled(const Attributes& attributes) {
        return palette_->assembleCompleteAttributes(test::dictionaryOf(attributes));
    }

    static Ref<NSFont> fontOf(const NSDictionary& attributes) {
        return attributes.objectForKey<NSFont>(*NSFontAttributeName);
    }

    static const NSParagraphStyle& styleOf(const NSDictionary& attributes) {
        return *attributes.objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
    }

    test::LogCapture capture_;
    const Ref<QzAnnoPalette> palette_ = QzAnnoPalette::init();
};

class EntryLog final : public QzLog {
public:
    void logError(const NSDictionary& entry) override {
        for (const ObjectMap::Entry& line : entry.map().entries()) {
            lines.push_back(line.key->description() + "=" + line.value->description());
        }
    }
    std::vector<std::string> lines;
};

TEST_F(AttributeAssemblyTest, HigherPrioritiesWinWhateverTheOrderOfTheSet) {
    setGlobals({{QzFontSizeAttribute, number(1)}, {QzLeadingAttribute, number(4)}});
    const auto low = annotation("low", {{QzFontSizeAttribute, number(10)}, {NSKernAttributeName, number(2)}});
    const auto left = annotation("left out", {{QzFontSizeAttribute, number(20)}, {"Unknown"_ns, number(3)}});
    const auto high = annotation("high", {{QzFontSizeAttribute, number(30)}});
    const auto foreign = QzAnnoKey::keyWithName("low"_ns);
    const auto global = palette_->annoKeyAtPriority(0);

    for (const auto& set : {NSSet::setWithObjects<QzAnnoKey>({low, high}),
                            NSSet::setWithObjects<QzAnnoKey>({high, foreign, global, low})}) {
        const auto merged = palette_->attributesForSet(set);
        EXPECT_EQ(merged->objectForKey(*QzAnnoAttributeName), set);
        EXPECT_TRUE(merged->isEqual(*test::dictionaryOf({{QzFontSizeAttribute, number(30)},
                                                         {QzLeadingAttribute, number(4)},
                                                         {NSKernAttributeName, number(2)},
                                                         {QzAnnoAttributeName, set}})))
            << merged->description();
    }
    const auto globalsOnly = test::dictionaryOf(
        {{QzFontSizeAttribute, number(1)}, {QzLeadingAttribute, number(4)}, {QzAnnoAttributeName, NSSet::set()}});
    EXPECT_TRUE(palette_->attributesForSet(NSSet::set())->isEqual(*globalsOnly));
    EXPECT_TRUE(palette_->attributesForSet({})->isEqual(*globalsOnly));
    EXPECT_EQ(palette_->lookupAnno({})->allAttributes()->count(), 2u)
        << "the annotation's own attributes are untouched";
}

TEST_F(AttributeAssemblyTest, FullFontNameGoesBeforeFamilyAndStyle) {
    const auto both = assembled({{QzFontAttribute, "DejaVuSans-Bold"_ns},
                                 {QzFontNameAttribute, "DejaVuSerif"_ns},
                                 {QzFontStyleAttribute, "Bold"_ns},
                                 {QzFontSizeAttribute, number(36)}});
    EXPECT_EQ(fontOf(*both)->fontName()->utf8(), "DejaVuSans-Bold");
    EXPECT_EQ(fontOf(*both)->pointSize(), 36);
    EXPECT_TRUE(both->objectForKey(*QzFontStyleAttribute)) << "the fragments stay";

    const auto parts = assembled({{QzFontNameAttribute, "DejaVuSerif"_ns}, {QzFontStyleAttribute, "Bold"_ns}});
    EXPECT_EQ(fontOf(*parts)->fontName()->utf8(), "DejaVuSerif-Bold");
    const auto emptyStyle = assembled({{QzFontNameAttribute, "DejaVuSerif"_ns}, {QzFontStyleAttribute, ""_ns}});
    EXPECT_EQ(fontOf(*emptyStyle)->fontName()->utf8(), "DejaVuSerif");
    const auto unnamed = assembled({{QzFontStyleAttribute, "Bold"_ns}, {QzFontSizeAttribute, number(20)}});
    EXPECT_TRUE(fontOf(*unnamed)->isEqual(*NSFont::titleBarFontOfSize(20)));
    EXPECT_TRUE(fontOf(*assembled({}))->isEqual(*NSFont::titleBarFontOfSize(0)));
    EXPECT_THAT(capture_.lines(), IsEmpty());
}

TEST_F(AttributeAssemblyTest, MissingFontIsReportedEveryTime) {
    const auto log = std::make_shared<EntryLog>();
    palette_->setLog(log);
    const Attributes attributes = {
        {QzFontNameAttribute, "No Such Font"_ns}, {QzFontStyleAttribute, "Bold"_ns}, {QzFontSizeAttribute, number(50)}};
    EXPECT_TRUE(fontOf(*assembled(attributes))->isEqual(*NSFont::titleBarFontOfSize(50)));
    EXPECT_THAT(log->lines, testing::Contains("QzLogEntry_Cause=No Such Font-Bold"));
    EXPECT_EQ(log->lines.size(), 5u);
    assembled(attributes);
    EXPECT_EQ(log->lines.size(), 10u);

    palette_->setLog(std::make_shared<EntryLog>());
    assembled(attributes);  // that log is gone, for the palette does not own it
    EXPECT_THAT(capture_.lines(), ElementsAre("Missing Font: No Such Font-Bold\n", "Missing Font: No Such Font-Bold\n",
                                              "Missing Font: No Such Font-Bold\n"));
}

TEST_F(AttributeAssemblyTest, ParagraphStyleIsAlwaysMadeAnew) {
    NSParagraphStyle::Values other;
    other.minimumLineHeight = 99;
    const auto complete =
        assembled({{QzLeadingAttribute, number(4)},
                   {QzHorizontalAlignmentAttribute, "2"_ns},
                   {NSParagraphStyleAttributeName, NSParagraphStyle::paragraphStyleWithValues(other)}});
    EXPECT_EQ(styleOf(*complete).lineSpacing(), 4);
    EXPECT_EQ(styleOf(*complete).paragraphSpacing(), 4);
    EXPECT_EQ(styleOf(*complete).alignment(), NSTextAlignment::center);
    EXPECT_EQ(styleOf(*complete).values().minimumLineHeight, 0);
    EXPECT_TRUE(styleOf(*assembled({})).isEqual(*NSParagraphStyle::defaultParagraphStyle()));
}

TEST_F(AttributeAssemblyTest, HostileValuesCountAsAbsentWithOneLine) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const float defaultSize = NSFont::titleBarFontOfSize(0)->pointSize();
    const struct {
        Ref<NSString> name;
        Ref<NSObject> value;
        float size;
        const char* line;  // of the log; empty where nothing is logged
    } cases[] = {
        {QzFontSizeAttribute, "72"_ns, 72, ""},
        {QzFontSizeAttribute, "large"_ns, defaultSize, "large, which is not a number, and is ignored"},
        {QzFontSizeAttribute, number(0), defaultSize, ""},
        {QzFontSizeAttribute, number(-5), defaultSize, ""},
        {QzFontSizeAttribute, number(10000), 10000, ""},
        {QzFontSizeAttribute, number(20000), 10000, "Font size 20000 is outside 0 to 10000 points; 10000 is used\n"},
        {QzFontSizeAttribute, number(1e300), 10000, "10000 is used\n"},
        {QzFontSizeAttribute, number(infinity), 10000, "10000 is used\n"},
        {QzFontSizeAttribute, number(nan), defaultSize, "the default size is used\n"},
        {QzFontAttribute, number(1), defaultSize, "NSNumber and is ignored"},
        {QzFontNameAttribute, NSSet::set(), defaultSize, "NSSet and is ignored"},
        {QzLeadingAttribute, number(nan), defaultSize, "Leading nan is not a finite number"},
        {QzLeadingAttribute, NSSet::set(), defaultSize, "which is not a number, and is ignored"},
        {QzBoldAttribute, NSSet::set(), defaultSize, "which is not a number, and is ignored"},
        {QzHorizontalAlignmentAttribute, number(5), defaultSize, "alignment 5 is outside 0 to 4"},
        {QzHorizontalAlignmentAttribute, number(-1), defaultSize, "alignment -1 is outside"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name->utf8() + " " + row.value->description());
        capture_.clear();
        const auto complete = assembled({{row.name, row.value}});
        EXPECT_EQ(fontOf(*complete)->pointSize(), row.size);
        EXPECT_TRUE(styleOf(*complete).isEqual(*NSParagraphStyle::defaultParagraphStyle()));
        EXPECT_EQ(complete->objectForKey(*row.name), row.value) << "passes through";
        ASSERT_EQ(capture_.lines().size(), *row.line ? 1u : 0u);
        if (*row.line) {
            EXPECT_THAT(capture_.lines()[0], HasSubstr(row.line));
        }
    }
}

TEST_F(AttributeAssemblyTest, InlinesAreWhatTheAnnotationsDoNotGive) {
    // 12.1 and 4.3 have no exact 32-bit form, which fonts and styles store.
    const auto key = annotation("Title", {{QzFontAttribute, "DejaVuSans"_ns},
                                          {QzFontSizeAttribute, number(12.1)},
                                          {QzLeadingAttribute, number(4.3)},
                                          {QzHorizontalAlignmentAttribute, "2"_ns},
                                          {QzTextColorAttribute, NSColor::whiteColor()}});
    const auto complete = palette_->assembleCompleteAttributes(palette_->attributesForSet(NSSet::setWithObject(key)));
    EXPECT_EQ(palette_->findInlines(complete)->description(), "{}");

    // Traits combine on a run, and the resulting font is not formatting in itself.
    const auto bold = annotation("b", {{QzBoldAttribute, NSNumber::numberWithInt(1)}});
    const auto italic = annotation("i", {{QzItalicAttribute, number(1)}});
    const auto traited = palette_->assembleCompleteAttributes(
        palette_->attributesForSet(NSSet::setWithObjects<QzAnnoKey>({key, bold, italic})));
    EXPECT_EQ(fontOf(*traited)->fontName()->utf8(), "DejaVuSans-BoldOblique");
    EXPECT_EQ(palette_->findInlines(traited)->description(), "{}");

    ObjectMap edited = complete->map();
    edited.set(QzTextColorAttribute, NSColor::blackColor());
    edited.set(NSFontAttributeName, NSFont::fontWithName(*"DejaVuSans"_ns, 13));
    edited.set("Foreign"_ns, "kept"_ns);
    const auto inlines = palette_->findInlines(NSDictionary::dictionaryWithMap(edited));
    EXPECT_TRUE(inlines->isEqual(*test::dictionaryOf(
        {{QzTextColorAttribute, NSColor::blackColor()}, {QzFontSizeAttribute, number(13)}, {"Foreign"_ns, "kept"_ns}})))
        << inlines->description();
    EXPECT_EQ(palette_->findInlines(test::dictionaryOf({{"Foreign"_ns, "kept"_ns}}))->count(), 1u)
        << "no annotation list";
}

TEST_F(AttributeAssemblyTest, DisassemblyTakesFontsAndStylesOnly) {
    NSParagraphStyle::Values style;
    style.lineSpacing = 0.1f;
    style.paragraphSpacing = 7;
    style.alignment = NSTextAlignment::right;
    const auto fragments = palette_->disassembleFragments(
        test::dictionaryOf({{NSFontAttributeName, NSFont::fontWithName(*"DejaVuSans-Bold"_ns, 21)},
                            {NSParagraphStyleAttributeName, NSParagraphStyle::paragraphStyleWithValues(style)}}));
    EXPECT_TRUE(fragments->isEqual(*test::dictionaryOf({{QzFontSizeAttribute, number(21)},
                                                        {QzFontAttribute, "DejaVuSans-Bold"_ns},
                                                        {QzLeadingAttribute, number(double{0.1f})},
                                                        {QzHorizontalAlignmentAttribute, NSNumber::numberWithInt(1)}})))
        << fragments->description();
    const auto foreign =
        test::dictionaryOf({{NSFontAttributeName, "a name"_ns}, {NSParagraphStyleAttributeName, number(1)}});
    EXPECT_TRUE(palette_->disassembleFragments(foreign)->isEqual(*foreign));
}

TEST(NameStyleSeparationTest, NamesSplitAtTheirHyphens) {
    const struct {
        Ref<NSString> fullName, family, style;
    } cases[] = {
        {"Serif"_ns, "Serif"_ns, ""_ns},
        {"Serif-Bold"_ns, "Serif"_ns, "Bold"_ns},
        {"Serif-Bold-Oblique"_ns, "Serif"_ns, "Bold"_ns},
        {"Serif-"_ns, "Serif"_ns, ""_ns},
        {"-Bold"_ns, ""_ns, "Bold"_ns},
        {""_ns, ""_ns, ""_ns},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(fontFontName(*row.fullName)->utf8(), row.family->utf8());
        EXPECT_EQ(fontStyleName(*row.fullName)->utf8(), row.style->utf8());
    }
    EXPECT_EQ(fontnameWithName("Serif"_ns, {})->utf8(), "Serif");
    EXPECT_FALSE(fontnameWithName({}, "Bold"_ns));
    EXPECT_FALSE(fontWithName({}, "Bold"_ns, 12, {}));
    EXPECT_EQ(fontStyleName(*fontWithName("DejaVuSans"_ns, "Bold"_ns, 12, {}))->utf8(), "Bold");
}

}  // namespace
}  // namespace qz
