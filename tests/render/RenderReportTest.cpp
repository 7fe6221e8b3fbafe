#include <gmock/gmock.h>

#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/render/RenderReport.h"
#include "tests/support/FontFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/Pixels.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;
using Part = RenderReport::Clipping::Part;

class RenderReportTest : public testing::Test {
protected:
    RenderReportTest() {
        pipeline->setPalette(palette);
        pipeline->setScreenSize({640, 360}, {640, 360});
    }

    void give(const Attributes& attributes) const { giveAttributes(*palette, palette->lookupAnno({}), attributes); }

    RenderReport reportOf(std::string_view text, bool fullScreen = true) const {
        pipeline->setAnnoString(QzAnnoString::initWithString(NSString::stringWithUTF8String(text)));
        return pipeline->reportInFullScreen(fullScreen);
    }

    // What the library logs is not asked here.
    LogCapture log;
    Ref<QzAnnoPalette> palette = paletteWithGlobals({{QzFontAttribute, "Noto Sans"_ns},
                                                     {QzFontSizeAttribute, number(30)},
                                                     {QzBoundingMarginsAttribute, margins(100, 100, 100, 100)}});
    Ref<QzAnnoStringToScreen> pipeline = QzAnnoStringToScreen::init();
};

TEST_F(RenderReportTest, NothingIsToldOfATitleThatIsShownAsAskedFor) {
    EXPECT_TRUE(reportOf("A title\tof two lines\n").isEmpty());
    EXPECT_TRUE(reportOf("").isEmpty());
    give({{QzFontAttribute, "Noto Sans-Bold"_ns}});
    EXPECT_TRUE(reportOf("family and style").isEmpty());
}

TEST_F(RenderReportTest, NamesTheFontsThatServeForOthers) {
    const auto missing = addAnnotation(*palette, "Gone", {{QzFontAttribute, "Gone-Bold"_ns}});
    const auto text = QzMutableAnnoString::initWithString("Title 東京 2 京 gone"_ns);
    text->addAnno(missing, {13, 4});
    pipeline->setAnnoString(text);
    const RenderReport report = pipeline->reportInFullScreen(true);
    ASSERT_EQ(report.substitutions.size(), 2u);
    const auto& [lacking, gone] = std::tie(report.substitutions[0], report.substitutions[1]);
    EXPECT_EQ(lacking.fontAskedFor, "Noto Sans");
    EXPECT_EQ(lacking.fontThatServed, "NotoSansCJKjp-Regular");
    EXPECT_EQ(lacking.characters, "東京 2") << "each once";
    EXPECT_THAT(lacking.ranges, ElementsAre(Range{6, 6}));
    EXPECT_FALSE(lacking.isFontMissing);
    EXPECT_EQ(gone.fontAskedFor, "Gone-Bold");
    EXPECT_EQ(gone.characters, "gone");
    EXPECT_TRUE(gone.isFontMissing);
    EXPECT_THAT(report.missingGlyphs, IsEmpty());
}

TEST_F(RenderReportTest, NamesTheCharactersThatNoFontShows) {
    const RenderReport report = reportOf("a\U000FFFF0 b\U000FFFF0\U000FFFF1");
    ASSERT_EQ(report.missingGlyphs.size(), 2u);
    EXPECT_EQ(report.missingGlyphs[0].character, "\U000FFFF0");
    EXPECT_EQ(report.missingGlyphs[0].font, "NotoSans-Regular");
    EXPECT_THAT(report.missingGlyphs[0].ranges, ElementsAre(Range{1, 2}, Range{5, 2}));
    EXPECT_EQ(report.missingGlyphs[1].character, "\U000FFFF1");
    EXPECT_THAT(report.substitutions, IsEmpty());
}

TEST_F(RenderReportTest, TellsWhereTheBoxEndsTheText) {
    // 160 points hold three lines of 41, and most of a fourth.
    const RenderReport report = reportOf("one\ntwo\nthree\nfour\nfive");
    ASSERT_EQ(report.clipped.size(), 1u);
    EXPECT_EQ(report.clipped[0].part, Part::text);
    EXPECT_EQ(report.clipped[0].characters, (Range{19, 4}));
    EXPECT_TRUE(reportOf("one\ntwo\nthree\nfour\n \n").isEmpty()) << "blanks are not missed";
}

// The full screen's picture, which cuts nothing here, shows what a box picture would have to hold.
TEST_F(RenderReportTest, TellsOfLayersThatTheEdgeOfTheBoxCuts) {
    const struct {
        float width;
        const char* offset;
    } cases[] = {{0, "{0, 0}"},   {8, "{0, 0}"},  {16, "{0, 0}"},  {30, "{0, 0}"},   {60, "{0, 0}"}, {4, "{7, 0}"},
                 {4, "{-20, 0}"}, {4, "{0, 30}"}, {4, "{0, -40}"}, {40, "{15, 15}"}, {10, "{3, 3}"}, {10, "{40, 0}"}};
    int cut = 0;
    for (const auto& [width, offset] : cases) {
        give({{QzTextColorAttribute, NSColor::whiteColor()},
              {QzBackground2ColorAttribute, rgba(1, 0, 0)},
              {QzBackground2WidthAttribute, number(width)},
              {QzBackground2OffsetAttribute, NSString::stringWithUTF8String(offset)}});
        const RenderReport report = reportOf("Aggregate", false);
        const NSRect place = pipeline->placeInFullScreen(false);
        ASSERT_TRUE(reportOf("Aggregate", true).isEmpty());
        const PixelBox ink = inkOf(*pipeline->bitmapInFullScreen(true));
        const NSRect whole = {{static_cast<float>(ink.left), static_cast<float>(ink.top)},
                              {static_cast<float>(ink.width()), static_cast<float>(ink.height())}};
        const bool isInside = NSEqualRects(NSIntersectionRect(whole, place), whole);
        EXPECT_EQ(report.isEmpty(), isInside) << width << " wide at " << offset;
        for (const auto& clipping : report.clipped) EXPECT_EQ(clipping.part, Part::layer2);
        cut += !report.isEmpty();
    }
    EXPECT_GT(cut, 4) << "both must come up";
    EXPECT_LT(cut, 10);
}

TEST_F(RenderReportTest, TellsOfLettersBeyondTheScreen) {
    // Slanted by its height, the last letter leaves the screen at the right.
    give({{QzBoundingMarginsAttribute, margins(0, 0, 0, 0)},
          {QzHorizontalAlignmentAttribute, integer(1)},
          {NSObliquenessAttributeName, number(1)}});
    const RenderReport report = reportOf("Title");
    ASSERT_EQ(report.clipped.size(), 1u);
    EXPECT_EQ(report.clipped[0].part, Part::glyphs);
    EXPECT_EQ(report.clipped[0].characters.end(), 5u);
}

TEST_F(RenderReportTest, PipelinesHaveFontsOfTheirOwn) {
    const TemporaryFolder folder;
    writeText(folder.file("q.ttf"), quokka(fontFile("DejaVu Serif")));
    give({{QzFontAttribute, "Quokka Serif"_ns}});
    EXPECT_EQ(reportOf("Title").substitutions.size(), 1u);
    pipeline->setFontLibrary(FontLibrary::withDirectories({folder.path().string()}));
    EXPECT_FALSE(pipeline->available());
    EXPECT_TRUE(reportOf("Title").isEmpty());
    const auto other = QzAnnoStringToScreen::init();
    other->setPalette(palette);
    other->setScreenSize({640, 360}, {640, 360});
    other->setAnnoString(pipeline->annoString());
    EXPECT_EQ(other->reportInFullScreen(true).substitutions.size(), 1u);
}

TEST_F(RenderReportTest, TheLanguageChoosesFontsAndForms) {
    const auto servingFont = [&](std::string_view language) {
        EXPECT_TRUE(pipeline->setLanguage(language));
        return reportOf("骨").substitutions.at(0).fontThatServed;
    };
    EXPECT_EQ(servingFont("ja"), "NotoSansCJKjp-Regular");
    EXPECT_EQ(servingFont("zh-Hans"), "NotoSansCJKsc-Regular");
    EXPECT_EQ(servingFont(""), "NotoSansCJKjp-Regular");
    EXPECT_FALSE(pipeline->setLanguage("zh Hans"));
    EXPECT_TRUE(pipeline->available()) << "a refused tag changes nothing";

    // One font with the forms of all: the language tells it which.
    give({{QzFontAttribute, "Noto Sans CJK JP"_ns}});
    const auto glyphIn = [&](std::string_view language) {
        pipeline->setLanguage(language);
        EXPECT_TRUE(reportOf("骨").isEmpty());
        return pipeline->layoutManager()->glyphAtIndex(0);
    };
    EXPECT_EQ(glyphIn("ja"), glyphIn(""));
    EXPECT_NE(glyphIn("ja"), glyphIn("zh-Hans"));
}

}  // namespace
}  // namespace qz
