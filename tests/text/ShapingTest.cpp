#include <random>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/text/Shaping.h"
#include "platform/text/ShapingCache.h"

namespace qz {
namespace {

Ref<NSFont> fontNamed(const char* name, float size = 20) {
    return NSFont::fontWithName(*NSString::stringWithUTF8String(name), size);
}

float widthOf(const std::vector<ShapedGlyph>& glyphs) {
    float width = 0;
    for (const ShapedGlyph& glyph : glyphs) width += glyph.advance;
    return width;
}

bool sameGlyphs(const std::vector<ShapedGlyph>& a, const std::vector<ShapedGlyph>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const ShapedGlyph& x, const ShapedGlyph& y) {
        return x.glyph == y.glyph && x.cluster == y.cluster && x.advance == y.advance && x.offsetX == y.offsetX &&
               x.offsetY == y.offsetY;
    });
}

void expectOrdered(const std::vector<ShapedGlyph>& glyphs, Range range) {
    ASSERT_FALSE(glyphs.empty());
    EXPECT_EQ(glyphs.front().cluster, range.location);
    EXPECT_LT(glyphs.back().cluster, range.end());
    EXPECT_TRUE(std::is_sorted(glyphs.begin(), glyphs.end(), [](auto& a, auto& b) { return a.cluster < b.cluster; }));
}

TEST(ShapingTest, ControlsShowNothing) {
    const Ref<NSFont> font = fontNamed("DejaVuSans");
    const std::u16string_view text = u"a\tb\nc\u2028\u0007\u0085d\u00AD\u200B";
    const auto glyphs = shape({text, {0, 11}, font, 0, false, ""});
    EXPECT_EQ(glyphs.size(), 11u);
    EXPECT_NEAR(widthOf(glyphs), widthOf(shape({u"abcd", {0, 4}, font, 0, false, ""})), 0.5);
    for (const ShapedGlyph& glyph : glyphs) {
        if (text[glyph.cluster] >= u'a' && text[glyph.cluster] <= u'd') continue;
        EXPECT_NE(glyph.glyph, 0u) << "no sign of a missing glyph at " << glyph.cluster;
        EXPECT_EQ(glyph.advance, 0) << glyph.cluster;
    }
}

TEST(ShapingTest, HalvesOfPairsAreReplaced) {
    const Ref<NSFont> font = fontNamed("DejaVuSans");
    const NSGlyph replacement = font->glyphForCharacter(U'\uFFFD');
    const std::u16string text = {u'a', 0xD835, u'b', 0xDFD8, 0xD835, 0xDFD8};
    const auto glyphs = shape({text, {0, 6}, font, 0, false, ""});
    ASSERT_EQ(glyphs.size(), 5u) << "a pair is one";
    EXPECT_EQ(glyphs[1].glyph, replacement);
    EXPECT_EQ(glyphs[3].glyph, replacement);
    EXPECT_EQ(glyphs[4].glyph, font->glyphForCharacter(U'\U0001D7D8'));
}

TEST(ShapingTest, RefusesWhatIsOutOfBounds) {
    int reports = 0;
    setStandardErrorHook([&reports](std::string_view) { ++reports; });
    const std::u16string text(kShapingUnitsMax + 1, u'a');
    const Ref<NSFont> font = fontNamed("DejaVuSans");
    EXPECT_TRUE(shape({text, {0, kShapingUnitsMax + 1}, font, 0, false, ""}).empty());
    EXPECT_TRUE(shape({text, {4000, 98}, font, 0, false, ""}).empty());
    EXPECT_TRUE(shape({text, {0xFFFFFFFF, 2}, font, 0, false, ""}).empty());
    EXPECT_TRUE(shape({text, {0, 1}, nullptr, 0, false, ""}).empty());
    EXPECT_EQ(reports, 4);
    EXPECT_EQ(shape({text, {1, kShapingUnitsMax}, font, 0, false, ""}).size(), kShapingUnitsMax);
    EXPECT_TRUE(shape({text, {7, 0}, font, 0, false, ""}).empty()) << "nothing to shape";
    EXPECT_EQ(reports, 4);
    setStandardErrorHook({});
}

// Whatever differs between two items, the cache gives each its own glyphs.
TEST(ShapingTest, ACacheTellsItemsApart) {
    const std::u16string_view texts[] = {u"office", u"بيت بيت", u"xoffice", u"بيتبيت", u"of fice"};
    ShapingCache cache;
    for (int round = 0; round < 2; ++round) {
        for (const std::u16string_view text : texts) {
            for (int variant = 0; variant < 64; ++variant) {
                const auto start = static_cast<uint32_t>(variant & 1),
                           end = static_cast<uint32_t>(text.size() - (variant >> 1 & 1));
                ShapingItem item = {text,
                                    {start, end - start},
                                    fontNamed(variant & 4 ? "DejaVuSans" : "DejaVuSans-Bold", variant & 8 ? 20 : 21),
                                    0,
                                    (variant & 16) != 0,
                                    ""};
                item.allowsLigatures = !(variant & 32);
                if (variant % 3 == 0) item.withoutLigatures = {{start + 1, 1}};
                if (variant % 5 == 0) item.language = "ur";
                EXPECT_TRUE(sameGlyphs(cache.shape(item), shape(item))) << variant;
            }
        }
    }
    EXPECT_GE(cache.hits(), std::size(texts) * 64) << "the second round finds all of the first";
    // When full, it is emptied and continues to work.
    for (char16_t c = 0x4E00; c < 0x5E00; ++c) cache.shape({{&c, 1}, {0, 1}, fontNamed("DejaVuSans"), 0, false, ""});
    EXPECT_TRUE(sameGlyphs(cache.shape({u"fi", {0, 2}, fontNamed("DejaVuSans"), 0, false, ""}),
                           shape({u"fi", {0, 2}, fontNamed("DejaVuSans"), 0, false, ""})));
}

TEST(ShapingTest, AnyTextKeepsTheOrder) {
    const std::u16string_view alphabet =
        u"aAVfi \u0301\u0323\u200D\uFE0F\t\n\u05D0\u05B8بيتلا\u0651कि\u094Dर字タ\xD83D\xDE00\xDC00\u202E";
    const auto seed = std::random_device{}();
    std::mt19937 random(seed);
    const auto below = [&random](size_t bound) { return std::uniform_int_distribution<size_t>(0, bound - 1)(random); };
    for (int round = 0; round < 2000; ++round) {
        std::u16string text(1 + below(40), u' ');
        for (char16_t& unit : text) unit = alphabet[below(alphabet.size())];
        const auto location = static_cast<uint32_t>(below(text.size()));
        const auto length = static_cast<uint32_t>(1 + below(text.size() - location));
        const char* const font = below(2) ? "DejaVuSans" : "NotoSansDevanagari-Regular";
        SCOPED_TRACE(testing::Message() << "seed " << seed << " round " << round);
        expectOrdered(shape({text, {location, length}, fontNamed(font), 0, below(2) == 1, ""}), {location, length});
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace qz
