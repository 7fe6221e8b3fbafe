#include <random>

#include <gmock/gmock.h>

#include "QzAnno/render/RenderReport.h"
#include "platform/text/CaretCell.h"
#include "platform/text/TextRules.h"
#include "tests/render/MiddleOfScreen.h"
#include "tests/support/RandomChoices.h"

namespace qz {
namespace {

using namespace test;
using testing::ElementsAre;

constexpr Pixel kWhite = {255, 255, 255, 255};
constexpr Pixel kRed = {255, 0, 0, 255};

class TextRulesTest : public MiddleOfScreen {
protected:
    TextRulesTest() : MiddleOfScreen(40) {}

    Range glyphs() const { return manager().glyphRangeForTextContainer(*pipeline->textContainer()); }
    const QzAnnoLayoutManager& manager() const { return *pipeline->layoutManager(); }
    std::vector<TextRule> rules() const { return manager().textRulesForGlyphRange(glyphs(), {}); }

    NSRect advanceOf(uint32_t glyph) const {
        const NSRect line = manager().lineFragmentRectForGlyphAtIndex(glyph);
        const Range cluster = manager().characterRangeForGlyphRange({glyph, 1});
        for (const CaretCell& cell : manager().caretCellsForLineOfGlyphAtIndex(glyph)) {
            if (cell.characters.location != cluster.location) continue;
            return {{cell.left, line.origin.y}, {cell.right - cell.left, line.size.height}};
        }
        return {};
    }
};

const Attributes kUnderlined = {{QzUnderlineAttribute, integer(1)}};

TEST_F(TextRulesTest, LieWhereTheFontHasThemAndAsThick) {
    const struct {
        const char* font;
        float underlineTop, underlineThickness, strikeTop, strikeThickness;  // of the tables "post" and "OS/2", in ems
    } cases[] = {{"DejaVu Sans", -40 / 2048.0f, 90 / 2048.0f, 530 / 2048.0f, 102 / 2048.0f},
                 {"Noto Sans", -0.1f, 0.05f, 0.322f, 0.05f}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.font);
        drawText("gyp \u65E5\u672C a", {{QzFontAttribute, NSString::stringWithUTF8String(c.font)},
                                        {QzUnderlineAttribute, integer(1)},
                                        {QzStrikeThroughAttribute, number(1)}});
        const auto joined = joinedRules(rules());
        ASSERT_EQ(joined.size(), 2u) << "straight over characters that another font shows";
        const float baseline =
            manager().lineFragmentRectForGlyphAtIndex(0).origin.y + manager().locationForGlyphAtIndex(0).y;
        EXPECT_NEAR(joined[0].rect.origin.y, baseline - 40 * c.underlineTop, 0.01);
        EXPECT_NEAR(joined[0].rect.size.height, 40 * c.underlineThickness, 0.01);
        EXPECT_TRUE(joined[0].isBelow);
        EXPECT_NEAR(joined[1].rect.origin.y, baseline - 40 * c.strikeTop, 0.01);
        EXPECT_NEAR(joined[1].rect.size.height, 40 * c.strikeThickness, 0.01);
        const NSRect used = manager().usedRectForTextContainer(*pipeline->textContainer());
        EXPECT_NEAR(joined[0].rect.size.width, used.size.width - 10, 0.1) << "from end to end, without the padding";
    }
}

// Whatever the direction of a line's text, its rules cover exactly the underlined text, and move nothing.
TEST_F(TextRulesTest, CoverWhatTheyAreAskedForAndMoveNoWord) {
    const uint32_t firstSeed = std::random_device{}();
    for (uint32_t seed = firstSeed; seed != firstSeed + 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomChoices choices(seed);
        std::string text;
        for (int words = choices.ConsumeIntegralInRange(1, 12); words > 0; --words) {
            text += choices.PickValueInArray({"jag ", "\u0627\u0644\u0639\u0631\u0628\u064A\u0629 ", "12 ",
                                              "\u65E5\u672C", "i\u0301 ", "\t", "  \n"});
        }
        drawText(text.c_str(), {{QzHorizontalAlignmentAttribute, integer(choices.ConsumeIntegralInRange(0, 4))}});
        const Ref<QzAnnoKey> keys[] = {addAnnotation(*palette, "u", kUnderlined),
                                       addAnnotation(*palette, "red", {{QzTextColorAttribute, rgba(1, 0, 0)}}),
                                       addAnnotation(*palette, "up", {{NSBaselineOffsetAttributeName, number(5)}})};
        const auto string = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text));
        const auto annotate = [&](const Ref<QzAnnoKey>& key) {
            const uint32_t start = choices.ConsumeIntegralInRange<uint32_t>(0, string->length() - 1);
            string->addAnno(key, {start, choices.ConsumeIntegralInRange<uint32_t>(1, string->length() - start)});
        };
        annotate(keys[1]);
        annotate(keys[2]);
        const auto places = [&] {
            pipeline->setAnnoString(string->copy());
            pipeline->build();
            std::vector<NSPoint> found;
            for (auto glyph = glyphs().location; glyph < glyphs().end(); ++glyph)
                found.push_back(manager().locationForGlyphAtIndex(glyph));
            return found;
        };
        const auto before = places();
        annotate(keys[0]);
        ASSERT_EQ(places(), before);

        const auto found = rules();
        for (auto glyph = glyphs().location; glyph < glyphs().end(); ++glyph) {
            const NSRect cell = advanceOf(glyph);
            if (cell.size.width < 0.1f) continue;
            const NSPoint middle = {cell.origin.x + cell.size.width / 2, cell.origin.y};
            const auto isOver = [&](const TextRule& rule) {
                return rule.rect.origin.x <= middle.x && middle.x <= rule.rect.maxX() &&
                       rule.rect.origin.y > cell.origin.y && rule.rect.origin.y < cell.maxY();
            };
            const uint32_t character = manager().characterIndexForGlyphAtIndex(glyph);
            const auto attributes = pipeline->attributedString()->attributesAtIndex(character);
            ASSERT_EQ(std::ranges::count_if(found, isOver), attributes->objectForKey(*QzUnderlineAttribute) ? 1 : 0)
                << "at character " << character;
        }
    }
}

TEST_F(TextRulesTest, LayersFollowThemHoweverTheyAreDrawn) {
    for (const bool antialiases : {true, false}) {
        SCOPED_TRACE(antialiases);
        pipeline->layoutManager()->setAntialiasing(antialiases);
        const Attributes shadow = {{QzBackgroundColorAttribute, rgba(1, 0, 0)},
                                   {QzBackgroundWidthAttribute, number(4)},
                                   {QzBackgroundOffsetAttribute, "{0, 60}"_ns},
                                   {QzUnderlineAttribute, integer(1)}};
        // Blanks with a rule alone: a bar of 4 no-break blanks, and its wider one 60 below.
        const auto bitmap = drawText("\u00A0\u00A0\u00A0\u00A0", shadow);
        const NSRect rule = rules().at(0).rect;
        const PixelBox white = boxOf(*bitmap, [](Pixel p) { return p == kWhite; });
        const PixelBox red = boxOf(*bitmap, [](Pixel p) { return p == kRed; });
        EXPECT_NEAR(white.left, rule.origin.x, 1);
        EXPECT_NEAR(white.right, rule.maxX(), 1);
        EXPECT_NEAR(white.top, rule.origin.y, 1);
        EXPECT_NEAR(red.left, rule.origin.x - 2, 1.01);
        EXPECT_NEAR(red.right, rule.maxX() + 2, 1.01);
        EXPECT_NEAR(red.top, rule.origin.y + 58, 1.01);
        EXPECT_NEAR(red.bottom, rule.maxY() + 62, 1.01);
        for (int32_t x = white.left; x < white.right; ++x)
            ASSERT_EQ(pixelAt(*bitmap, x, white.top), kWhite) << "a gap at " << x;
    }
}

TEST_F(TextRulesTest, AreOneWithTranslucentLetters) {
    const auto bitmap = drawText("gypsy \u65E5", {{QzTextColorAttribute, rgba(1, 1, 1, 0.5f)},
                                                  {QzUnderlineAttribute, integer(1)},
                                                  {QzStrikeThroughAttribute, integer(1)}});
    EXPECT_EQ(boxOf(*bitmap, [](Pixel p) { return p.alpha > 128; }), PixelBox{}) << "where they cross";
    EXPECT_GT(boxOf(*bitmap, [](Pixel p) { return p.alpha == 128; }).width(), 100);
}

TEST_F(TextRulesTest, AreReportedWhereThePictureEndsAndNotUnderHangingBlanks) {
    Attributes attributes = kUnderlined;
    attributes.emplace_back(QzBoundingMarginsAttribute, margins(0, 100, 0, -9));
    attributes.emplace_back(QzVerticalAlignmentAttribute, integer(2));
    drawText("nnn", attributes);
    const auto clipped = pipeline->reportInFullScreen(true).clipped;
    ASSERT_EQ(clipped.size(), 1u) << "the letters stand on the screen's edge, and their rule below it";
    EXPECT_EQ(clipped[0].characters, (Range{0, 3}));

    drawText("nn      nnnnnnnn",
             {{QzUnderlineAttribute, integer(1)}, {QzBoundingMarginsAttribute, margins(0, 140, 0, 0)}});
    const auto lines = joinedRules(rules());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NEAR(lines[0].rect.size.width, 2 * manager().advanceForGlyphAtIndex(0), 0.1);
}

}  // namespace
}  // namespace qz
