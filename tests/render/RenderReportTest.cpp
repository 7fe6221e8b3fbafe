#include <cmath>
#include <random>

#include <gmock/gmock.h>

#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno/render/RenderReport.h"
#include "tests/support/FontFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/Pixels.h"
#include "tests/support/RandomChoices.h"
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

    // The library's log is not under test here.
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

TEST_F(RenderReportTest, NamesTheFacesThatAreNotThere) {
    give({{QzFontAttribute, "DejaVu Sans"_ns}, {QzItalicAttribute, integer(1)}});
    // Its oblique face has no Arabic, for which the upright one is slanted; Japanese is slanted from its own font.
    const RenderReport report = reportOf("Title \u0643 東 \U0001F600");
    using Trait = RenderReport::MissingTrait::Trait;
    ASSERT_EQ(report.missingTraits.size(), 2u);
    EXPECT_EQ(report.missingTraits[0].trait, Trait::italic);
    EXPECT_EQ(report.missingTraits[0].font, "DejaVuSans");
    EXPECT_THAT(report.missingTraits[0].ranges, ElementsAre(Range{6, 1}));
    EXPECT_EQ(report.missingTraits[1].font, "NotoSansCJKjp-Regular");
    EXPECT_EQ(report.substitutions.size(), 2u) << "of Japanese and of the emoji";
    EXPECT_FALSE(report.isEmpty());

    const TemporaryFolder folder;
    writeText(folder.file("q.ttf"), quokka(fontFile("DejaVu Sans Bold Oblique")));
    palette->setFontLibrary(FontLibrary::withDirectories({folder.path().string()}));
    give({{QzFontAttribute, "Quokka Sans"_ns}, {QzItalicAttribute, integer(0)}, {QzBoldAttribute, integer(0)}});
    const RenderReport heavy = reportOf("Title");
    ASSERT_EQ(heavy.missingTraits.size(), 2u) << "what a font is cannot be taken away";
    EXPECT_EQ(heavy.missingTraits[0].trait, Trait::regular);
    EXPECT_EQ(heavy.missingTraits[1].trait, Trait::upright);
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

/// A title usually too long for its box, which is given by whole per cents or fractional margins.
struct CrowdedTitle {
    Attributes attributes;
    std::string text;
    float boxHeight;
};

CrowdedTitle crowdedTitle(RandomChoices& choices, NSSize screen) {
    const auto fraction = [&](int32_t least, int32_t most, int32_t of) {
        return static_cast<float>(choices.ConsumeIntegralInRange(least, most)) / static_cast<float>(of);
    };
    CrowdedTitle title = {
        {{QzFontAttribute, choices.PickValueInArray({"DejaVu Sans"_ns, "Noto Sans"_ns, "Inter"_ns})},
         {QzFontSizeAttribute, number(choices.ConsumeBool() ? fraction(20, 79, 1) : fraction(2000, 7900, 100))},
         {QzVerticalAlignmentAttribute, integer(choices.ConsumeIntegralInRange(0, 2))},
         {QzHorizontalAlignmentAttribute, integer(choices.ConsumeIntegralInRange(0, 4))},
         {QzLeadingAttribute, number(choices.PickValueInArray({0.0, 4.0, 7.3}))}},
        {},
        0};
    for (int words = choices.ConsumeIntegralInRange(1, 60); words > 0; --words) {
        title.text += choices.PickValueInArray({"a ", "title ", "that ", "Überlänge ", "does\nnot ", "fit ", "\n"});
    }
    if (choices.ConsumeBool()) {
        const auto width = [&] { return screen.width * fraction(0, 3000, 10000); };
        const float top = screen.height * fraction(0, 4500, 10000), bottom = screen.height * fraction(0, 4500, 10000);
        title.boxHeight = static_cast<float>(double{screen.height} - (double{top} + double{bottom}));
        title.attributes.emplace_back(QzBoundingMarginsAttribute, margins(width(), width(), top, bottom));
    } else {
        const NSRect box = {{fraction(0, 30, 100), fraction(0, 60, 100)},
                            {fraction(30, 70, 100), fraction(8, 40, 100)}};
        title.boxHeight = box.size.height * screen.height;
        title.attributes.emplace_back(QzBoundingBoxAttribute, NSStringFromRect(box));
    }
    return title;
}

// In 32-bit floats a full box may seem to have a little room left, or to be slightly higher than it is.
TEST(CrowdedBox, LinesStandBelowOneAnotherAndWhatHasNoRoomIsTold) {
    const LogCapture log;
    const uint32_t firstSeed = std::random_device{}();
    int overflowing = 0;
    for (uint32_t seed = firstSeed; seed != firstSeed + 4000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomChoices choices(seed);
        const auto screen = choices.PickValueInArray<NSSize>({{1280, 720}, {720, 576}, {1920, 1080}, {3840, 2160}});
        const CrowdedTitle title = crowdedTitle(choices, screen);
        const auto palette = paletteWithGlobals(title.attributes);
        const auto pipeline = QzAnnoStringToScreen::init();
        pipeline->setPalette(palette);
        pipeline->setScreenSize(screen, screen);
        pipeline->setAnnoString(QzAnnoString::initWithString(NSString::stringWithUTF8String(title.text)));
        const bool isFullScreen = choices.ConsumeBool();
        const RenderReport report = pipeline->reportInFullScreen(isFullScreen);

        const auto& manager = *pipeline->layoutManager();
        const Range glyphs = manager.glyphRangeForTextContainer(*pipeline->textContainer());
        const NSRect box = pipeline->textContainer()->textBox();
        ASSERT_LE(box.size.height, std::ceil(title.boxHeight)) << "the box has grown";
        const float top = isFullScreen ? box.origin.y : 0;
        float bottomBefore = std::max(top, 0.0f);
        for (Range line{glyphs.location, 0}; line.end() < glyphs.end();) {
            const NSRect fragment = manager.lineFragmentRectForGlyphAtIndex(static_cast<uint32_t>(line.end()), &line);
            ASSERT_GE(fragment.origin.y, bottomBefore - 0.001f) << "a line over another";
            ASSERT_LT(fragment.origin.y, top + box.size.height - 0.005f) << "a line below the box";
            bottomBefore = fragment.maxY();
        }
        const std::u16string& characters = pipeline->annoString()->string()->characters();
        const uint64_t end = glyphs.length > 0 ? manager.characterRangeForGlyphRange(glyphs).end() : 0;
        const Range rest = {static_cast<uint32_t>(end), static_cast<uint32_t>(characters.size() - end)};
        const bool isTold = !report.clipped.empty() && report.clipped[0].part == Part::text;
        ASSERT_EQ(isTold, characters.find_first_not_of(u" \n", end) != characters.npos);
        ASSERT_EQ(isTold ? report.clipped[0].characters : rest, rest);
        ASSERT_EQ(manager.firstUnlaidGlyphIndex(), manager.numberOfGlyphs()) << "drawing would wait in vain";
        overflowing += isTold;
    }
    EXPECT_TRUE(testing::Test::HasFailure() || overflowing > 1000) << "hardly a title is too long";
}

// The full-screen picture, which cuts nothing here, shows what a box picture would have to contain.
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
        for (const auto& clipping : report.clipped) EXPECT_EQ(clipping.layer, 2u);
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

TEST_F(RenderReportTest, PalettesHaveFontsOfTheirOwn) {
    const TemporaryFolder folder;
    writeText(folder.file("q.ttf"), quokka(fontFile("DejaVu Serif")));
    give({{QzFontAttribute, "Quokka Serif"_ns}});
    EXPECT_EQ(reportOf("Title").substitutions.size(), 1u);
    palette->setFontLibrary(FontLibrary::withDirectories({folder.path().string()}));
    EXPECT_TRUE(reportOf("Title").isEmpty());
    // Text without a font gets the default font from there too.
    pipeline->setAttributedString(NSAttributedString::initWithString("Title"_ns));
    EXPECT_EQ(
        pipeline->attributedString()->attributesAtIndex(0)->objectForKey<NSFont>(*NSFontAttributeName)->fontLibrary(),
        palette->fontLibrary());
    const Ref<QzAnnoPalette> other = QzAnnoPalette::paletteFromPListData(*palette->pListData());
    pipeline->setPalette(other);
    EXPECT_EQ(reportOf("Title").substitutions.size(), 1u);
}

TEST_F(RenderReportTest, TheLanguageChoosesFontsAndForms) {
    EXPECT_TRUE(pipeline->setLanguage("zh-Hans"));
    EXPECT_EQ(reportOf("骨").substitutions.at(0).fontThatServed, "NotoSansCJKsc-Regular");
    EXPECT_FALSE(pipeline->setLanguage("zh Hans"));
    EXPECT_TRUE(pipeline->available()) << "a refused tag changes nothing";

    // One font with all forms: the language selects among them.
    give({{QzFontAttribute, "Noto Sans CJK JP"_ns}});
    const auto glyphIn = [&](std::string_view language) {
        pipeline->setLanguage(language);
        EXPECT_TRUE(reportOf("骨").isEmpty());
        return pipeline->layoutManager()->glyphAtIndex(0);
    };
    EXPECT_EQ(glyphIn("ja"), glyphIn(""));
    EXPECT_NE(glyphIn("ja"), glyphIn("zh-Hans"));
}

PixelBox inkWith(const std::shared_ptr<FontLibrary>& library, const char* font) {
    const Ref<QzAnnoPalette> palette = paletteWithGlobals({{QzFontAttribute, NSString::stringWithUTF8String(font)},
                                                           {QzFontSizeAttribute, number(24)},
                                                           {QzBoldAttribute, integer(1)},
                                                           {QzStrikeThroughAttribute, integer(1)}});
    const auto screen = QzAnnoStringToScreen::init();
    palette->setFontLibrary(library);
    screen->setPalette(palette);
    screen->setScreenSize({160, 64}, {160, 64});
    screen->setAnnoString(QzAnnoString::initWithString("Title ffi \xC3\xA9"_ns));
    const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(true);
    screen->reportInFullScreen(true);
    return inkOf(*drawn);
}

/// Bytes changed anywhere, including the table directory, and truncated files. Either the result is drawn, or another
/// font is used.
TEST(FontFault, DamagedFontsAreDrawnOrReplaced) {
    const LogCapture log;
    const std::string whole = quokka(fontFile("DejaVuSans"));
    ASSERT_FALSE(whole.empty());
    std::minstd_rand random(11);
    for (int damage = 0; damage < 40; ++damage) {
        SCOPED_TRACE(testing::Message() << "damage " << damage);
        std::string file = whole;
        const size_t within = damage % 2 ? 4096 : file.size();
        for (int byte = 0; byte < 1 << damage % 12; ++byte) file[random() % within] = static_cast<char>(random());
        if (damage % 5 == 4) file.resize(random() % file.size());
        const TemporaryFolder folder;
        ASSERT_TRUE(writeText(folder.file("quokka.ttf"), file));
        const auto library = FontLibrary::withDirectories({folder.path().string()});
        ASSERT_TRUE(library);
        inkWith(library, "Quokka Sans");
    }
    EXPECT_GT(inkWith({}, "DejaVu Sans").width(), 20) << "other fonts are as they were";
}

}  // namespace
}  // namespace qz
