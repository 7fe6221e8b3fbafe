#include <gtest/gtest.h>

#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/render/QzAnnoLayoutManager.h"
#include "tests/render/MiddleOfScreen.h"

namespace qz {
namespace {

using namespace test;

// A rectangle with straight edges, so that widths can be counted in pixels.
constexpr const char* kBlock = "\u2588";

constexpr Pixel kWhite = {255, 255, 255, 255};
constexpr Pixel kRed = {255, 0, 0, 255};
constexpr Pixel kBlue = {0, 0, 255, 255};
constexpr Pixel kGreen = {0, 255, 0, 255};

/// Draws one block.
class LayersTest : public MiddleOfScreen {
protected:
    LayersTest() : MiddleOfScreen(100) {}

    Ref<NSBitmapImageRep> draw(const Attributes& attributes, const char* text = kBlock) {
        return drawText(text, attributes);
    }

    /// Where the block alone is drawn: the pixels that it covers wholly.
    PixelBox block() {
        return boxOf(*draw({}), [](Pixel p) { return p == kWhite; });
    }

    /// Runs of equal pixels from the block's middle to the right, each its colour and length; the first is the block's
    /// half.
    std::vector<std::pair<Pixel, int>> rightward(const NSBitmapImageRep& bitmap, const PixelBox& box) {
        std::vector<std::pair<Pixel, int>> runs;
        for (int32_t x = (box.left + box.right) / 2; x < bitmap.pixelsWide(); ++x) {
            const Pixel pixel = pixelAt(bitmap, x, (box.top + box.bottom) / 2);
            if (runs.empty() || !(runs.back().first == pixel)) runs.emplace_back(pixel, 0);
            ++runs.back().second;
        }
        return runs;
    }
};

TEST_F(LayersTest, LieInOrderBoxLayerTwoLayerOneGlyphs) {
    const Attributes layers = {
        {QzBackgroundColorAttribute, rgba(1, 0, 0)},
        {QzBackgroundWidthAttribute, number(8)},
        {QzBackground2ColorAttribute, rgba(0, 0, 1)},
        {QzBackground2WidthAttribute, number(20)},
        {QzBackground2OffsetAttribute, "{10, 0}"_ns},
        {QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::qzbbWithColor(rgba(0, 1, 0), 2)},
    };
    const char* twoBlocks = "\u2588 \u2588";
    const PixelBox both = boxOf(*draw({}, twoBlocks), [](Pixel p) { return p == kWhite; });
    const PixelBox box = {both.left, both.top, both.left + 70, both.bottom};  // the first block is some 77 wide
    const auto bitmap = draw(layers, twoBlocks);
    // Layer 1 shows half its width, 4; layer 2 half its width displaced by 10, 20, minus the part under layer 1; the
    // rest of the blank shows the box, up to layer 1 of the second block. Edges between pixels may take one pixel each.
    std::vector<std::pair<Pixel, int>> solid;
    for (const auto& run : rightward(*bitmap, box)) {
        if (run.second > 1) solid.push_back(run);
    }
    ASSERT_GE(solid.size(), 5u);
    const std::pair<Pixel, int> expected[] = {{kWhite, 0}, {kRed, 4}, {kBlue, 16}, {kGreen, 5}, {kRed, 4}};
    for (size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(solid[i].first, expected[i].first);
        if (i == 0) continue;  // from the middle of the block, wherever that is
        EXPECT_NEAR(solid[i].second, expected[i].second, 2);
    }
}

TEST_F(LayersTest, AWidthOfZeroIsOneDisplacedCopyAtARoundedPlace) {
    const PixelBox box = block();
    const auto bitmap =
        draw({{QzBackgroundColorAttribute, rgba(1, 0, 0)}, {QzBackgroundOffsetAttribute, "{6.4, 5.6}"_ns}});
    const PixelBox red = boxOf(*bitmap, [](Pixel p) { return p == kRed; });
    EXPECT_NEAR(red.right, box.right + 6, 1);
    EXPECT_NEAR(red.bottom, box.bottom + 6, 1);
    EXPECT_EQ(pixelAt(*bitmap, box.left + 2, box.top + 2), kWhite);
}

TEST_F(LayersTest, ALayerWithoutVisibleColorIsNotDrawn) {
    const PixelBox alone = inkOf(*draw({}));
    const Attributes wide = {{QzBackgroundWidthAttribute, number(30)}};
    EXPECT_EQ(inkOf(*draw(wide)), alone) << "no colour";
    Attributes cases = wide;
    cases.emplace_back(QzBackgroundColorAttribute, rgba(1, 0, 0, 0.001f));
    EXPECT_EQ(inkOf(*draw(cases)), alone);
    cases.back().second = rgba(1, 0, 0, 0.01f);
    EXPECT_NEAR(inkOf(*draw(cases)).width(), alone.width() + 30, 1);
}

TEST_F(LayersTest, WithoutAntialiasingLayersAreRepeatedGlyphsWithHardEdges) {
    pipeline->layoutManager()->setAntialiasing(false);
    EXPECT_FALSE(pipeline->layoutManager()->antialiasing());
    EXPECT_TRUE(pipeline->layoutManager()->usesScreenFonts());
    const PixelBox alone = inkOf(*draw({}));
    const struct {
        double width;
        int n;
    } cases[] = {{0, 0}, {1, 1}, {2, 1}, {3, 2}, {8, 4}, {65, 32}, {1e30, 32}, {-1, 0}, {-1e30, 0}};
    for (const auto& [width, n] : cases) {
        SCOPED_TRACE(width);
        const auto bitmap =
            draw({{QzBackgroundColorAttribute, rgba(1, 0, 0)}, {QzBackgroundWidthAttribute, number(width)}});
        // Copies are on whole pixels, so a position between pixels may shift by half a pixel.
        EXPECT_NEAR(inkOf(*bitmap).width(), alone.width() + 2 * n, 1);
        EXPECT_NEAR(inkOf(*bitmap).height(), alone.height() + 2 * n, 1);
        const PixelBox soft = boxOf(*bitmap, [](Pixel p) { return p.alpha != 0 && p.alpha != 255; });
        EXPECT_EQ(soft, PixelBox{});
    }
}

TEST_F(LayersTest, ANegativeWidthDrawsNoCopy) {
    const PixelBox alone = inkOf(*draw({}));
    const auto bitmap = draw({{QzBackgroundColorAttribute, rgba(1, 0, 0)},
                              {QzBackgroundWidthAttribute, number(-3)},
                              {QzBackgroundOffsetAttribute, "{20, 20}"_ns}});
    EXPECT_EQ(inkOf(*bitmap), alone);
}

TEST_F(LayersTest, QualityDecidesTheJoins) {
    const PixelBox box = block();
    const Attributes layer = {{QzBackgroundColorAttribute, rgba(1, 0, 0)}, {QzBackgroundWidthAttribute, number(40)}};
    // 17 right of and below the corner: inside the square of a mitre, outside the quarter circle of a round join.
    const auto corner = [&] { return pixelAt(*draw(layer), box.right + 16, box.bottom + 16); };
    const struct {
        float quality;
        bool mitred;
    } cases[] = {{1.0f, false}, {0.6f, false}, {0.5f, true}, {0.2f, true}};
    for (const auto& [quality, mitred] : cases) {
        pipeline->layoutManager()->setQualityFactor(quality);
        EXPECT_EQ(corner(), mitred ? kRed : kClear) << quality;
    }
}

TEST_F(LayersTest, TheBoundingBoxIsStrokedOrFilled) {
    const auto boxed = [&](int32_t type) {
        return draw({{QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::qzbbWithColor(rgba(0, 1, 0), type)}}, "i");
    };
    const auto greens = [](const NSBitmapImageRep& bitmap) {
        return boxOf(bitmap, [](Pixel p) { return p.green > 100 && p.red == 0; });
    };
    const PixelBox filled = greens(*boxed(2));
    const NSRect used = pipeline->textContainer()->textBox();
    EXPECT_EQ(filled, (PixelBox{static_cast<int32_t>(used.origin.x), static_cast<int32_t>(used.origin.y),
                                static_cast<int32_t>(used.maxX()), static_cast<int32_t>(used.maxY())}));
    const auto outlined = boxed(1);
    // A line of one point on the edge covers half a pixel on either side.
    EXPECT_NEAR(greens(*outlined).width(), filled.width(), 2);
    EXPECT_EQ(pixelAt(*outlined, filled.left + 3, filled.top + 3), kClear);
    EXPECT_EQ(greens(*boxed(0)), PixelBox{});
    EXPECT_EQ(greens(*boxed(-1)), PixelBox{});
}

TEST_F(LayersTest, EveryRunHasItsOwnLayers) {
    const auto string = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String("\u2588\u2588"));
    draw({});
    const Ref<QzAnnoKey> outlined = addAnnotation(
        *palette, "outlined", {{QzBackgroundColorAttribute, rgba(1, 0, 0)}, {QzBackgroundWidthAttribute, number(16)}});
    string->addAnno(outlined, {1, 1});
    pipeline->setAnnoString(string);
    const auto bitmap = pipeline->bitmapInFullScreen(true);
    const PixelBox ink = inkOf(*bitmap);
    const PixelBox red = boxOf(*bitmap, [](Pixel p) { return p.red == 255 && p.green == 0; });
    EXPECT_GT(red.left, (ink.left + ink.right) / 2 - 20) << "the first block has no layer";
    EXPECT_NEAR(red.right, ink.right, 1);
}

TEST_F(LayersTest, AnAccentHasTheOutlineOfItsLetter) {
    // Decomposed, so that letter and accent are two glyphs of one cluster where the font has no composition rule for
    // them.
    const Attributes outline = {{QzBackgroundColorAttribute, rgba(1, 0, 0)}, {QzBackgroundWidthAttribute, number(12)}};
    const PixelBox letters = inkOf(*draw({}, "x\u0306"));
    const PixelBox outlined = inkOf(*draw(outline, "x\u0306"));
    EXPECT_NEAR(outlined.top, letters.top - 6, 1);
    EXPECT_NEAR(outlined.bottom, letters.bottom + 6, 1);
}

TEST_F(LayersTest, MergedLayersAreEvenWhereGlyphsOverlap) {
    // Strokes of neighbours and of a glyph's own contours overlap; half covers half again unless merged.
    const Attributes layer = {{QzBackgroundColorAttribute, rgba(1, 0, 0, 0.5f)},
                              {QzBackgroundWidthAttribute, number(14)},
                              {QzTextColorAttribute, rgba(0, 0, 0, 0)}};
    const auto densest = [](const NSBitmapImageRep& bitmap) {
        int alpha = 0;
        for (int32_t y = 0; y < bitmap.pixelsHigh(); ++y) {
            for (int32_t x = 0; x < bitmap.pixelsWide(); ++x) {
                alpha = std::max(alpha, int{pixelAt(bitmap, x, y).alpha});
            }
        }
        return alpha;
    };
    EXPECT_GT(densest(*draw(layer, "AVO")), 180);
    EXPECT_FALSE(pipeline->layoutManager()->mergesLayers());
    pipeline->layoutManager()->setMergesLayers(true);
    const auto merged = draw(layer, "AVO");
    EXPECT_NEAR(densest(*merged), 128, 1);
    const PixelBox full = boxOf(*merged, [](Pixel p) { return p.alpha > 126; });
    EXPECT_GT(full.width(), 180) << "all of the letters, in one strength";

    // An opaque layer looks the same either way, two of different colours each keep their own.
    Attributes opaque = layer;
    opaque[0].second = rgba(1, 0, 0);
    const auto red = [](Pixel p) { return p == kRed; };
    const PixelBox mergedBox = boxOf(*draw(opaque, "AVO"), red);
    pipeline->layoutManager()->setMergesLayers(false);
    EXPECT_EQ(boxOf(*draw(opaque, "AVO"), red), mergedBox);
    pipeline->layoutManager()->setMergesLayers(true);
    const auto string = QzMutableAnnoString::initWithString("OO"_ns);
    draw(layer, "O");
    string->addAnno(addAnnotation(*palette, "blue", {{QzBackgroundColorAttribute, rgba(0, 0, 1)}}), {1, 1});
    pipeline->setAnnoString(string);
    const auto both = pipeline->bitmapInFullScreen(true);
    EXPECT_GT(boxOf(*both, [](Pixel p) { return p == kBlue; }).width(), 60);
    EXPECT_GT(boxOf(*both, [](Pixel p) { return p == Pixel{128, 0, 0, 128}; }).width(), 60);
}

constexpr const char* kFace = "\U0001F600";  // a yellow disc

/// Draws a yellow face of some 100 pixels.
class EmojiTest : public MiddleOfScreen {
protected:
    EmojiTest() : MiddleOfScreen(80) {}

    Ref<NSBitmapImageRep> draw(const Attributes& attributes, const char* text = kFace) {
        return drawText(text, attributes);
    }

    static bool isYellow(Pixel p) { return p.red > 200 && p.green > 150 && p.blue < 120; }
    static bool isSolid(Pixel p) { return p.alpha >= 128; }
};

TEST_F(EmojiTest, ComesInItsOwnColours) {
    const auto bitmap = draw({});
    const PixelBox yellow = boxOf(*bitmap, isYellow);
    EXPECT_NEAR(yellow.width(), 88, 12);  // 1.245 em wide with its margins
    EXPECT_NEAR(yellow.width(), yellow.height(), 4) << "a disc";
    const PixelBox white = boxOf(*bitmap, [](Pixel p) { return p.blue > 230 && p.alpha == 255; });
    EXPECT_LT(white.height(), yellow.height() / 2) << "teeth and eyes, not the text's colour";
}

TEST_F(EmojiTest, FadesWithTheText) {
    const auto whole = draw({}), faded = draw({{QzTextColorAttribute, rgba(0, 0, 1, 0.5f)}});
    for (int32_t y = 0; y < 300; y += 3) {
        for (int32_t x = 0; x < 400; x += 3) {
            const Pixel a = pixelAt(*whole, x, y), b = pixelAt(*faded, x, y);
            ASSERT_NEAR(b.alpha, a.alpha / 2.0, 1.5);
            ASSERT_NEAR(b.red, a.red / 2.0, 1.5);
            ASSERT_NEAR(b.blue, a.blue / 2.0, 1.5);
        }
    }
}

TEST_F(EmojiTest, HasTheBorderOfTheTitle) {
    const PixelBox alone = boxOf(*draw({}), isSolid);
    const auto bitmap = draw({{QzBackgroundColorAttribute, rgba(0, 0, 1)}, {QzBackgroundWidthAttribute, number(16)}});
    const PixelBox bordered = boxOf(*bitmap, isSolid);
    EXPECT_NEAR(bordered.left, alone.left - 8, 1);
    EXPECT_NEAR(bordered.right, alone.right + 8, 1);
    EXPECT_NEAR(bordered.top, alone.top - 8, 1);
    EXPECT_NEAR(bordered.bottom, alone.bottom + 8, 1);
    EXPECT_EQ(pixelAt(*bitmap, alone.left - 4, (alone.top + alone.bottom) / 2), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(pixelAt(*bitmap, bordered.left + 2, bordered.top + 2), kClear) << "round as the face, no box";
    EXPECT_TRUE(isYellow(pixelAt(*bitmap, alone.left + 12, (alone.top + alone.bottom) / 2)));
}

TEST_F(EmojiTest, CastsAShadowInTheLayersColour) {
    const PixelBox alone = boxOf(*draw({}), isSolid);
    for (const double width : {0.0, 2.0}) {
        const auto bitmap = draw({{QzBackgroundColorAttribute, rgba(0, 1, 0)},
                                  {QzBackgroundWidthAttribute, number(width)},
                                  {QzBackgroundOffsetAttribute, "{0, 90}"_ns}});
        const PixelBox green = boxOf(*bitmap, [](Pixel p) { return p == Pixel{0, 255, 0, 255}; });
        EXPECT_NEAR(green.bottom, alone.bottom + 90 + width / 2, 2) << width;
        EXPECT_NEAR(green.width(), alone.width() + width, 4) << width;
        // The whole face: a silhouette does not show eyes and mouth.
        EXPECT_EQ(pixelAt(*bitmap, (alone.left + alone.right) / 2, green.bottom - 30), (Pixel{0, 255, 0, 255}));
    }
}

TEST_F(EmojiTest, IsSharpAndWholeAtEverySize) {
    // A picture keeps its mean colour when scaled down: no pixel is dropped.
    const auto meanOf = [&](double size) {
        const auto bitmap = draw({{QzFontSizeAttribute, number(size)}});
        double red = 0, alpha = 0;
        for (int32_t y = 0; y < 300; ++y) {
            for (int32_t x = 0; x < 400; ++x) {
                red += pixelAt(*bitmap, x, y).red;
                alpha += pixelAt(*bitmap, x, y).alpha;
            }
        }
        return std::pair(red / alpha, alpha / 255 / size / size);
    };
    const auto [redAtStrike, areaAtStrike] = meanOf(109);
    for (const double size : {12.0, 20.0, 33.3, 80.0, 160.0}) {
        const auto [red, area] = meanOf(size);
        EXPECT_NEAR(red, redAtStrike, 0.01) << size;
        EXPECT_NEAR(area, areaAtStrike, 0.03 * areaAtStrike) << size;
    }
}

TEST_F(EmojiTest, IsLeftOutWhereItsMatrixLeavesNoPicture) {
    for (const double slant : {1e6, -1.8e36}) {
        const PixelBox face = boxOf(*draw({{NSObliquenessAttributeName, number(slant)}}), isSolid);
        EXPECT_LE(face.width(), 0) << slant;
    }
    EXPECT_GT(boxOf(*draw({{NSObliquenessAttributeName, number(0.3)}}), isSolid).width(), 0);
}

}  // namespace
}  // namespace qz
