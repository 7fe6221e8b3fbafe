#include "tests/render/MiddleOfScreen.h"

namespace qz {
namespace {

using namespace test;

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
        // All of the face: eyes and mouth do not show in a silhouette.
        EXPECT_EQ(pixelAt(*bitmap, (alone.left + alone.right) / 2, green.bottom - 30), (Pixel{0, 255, 0, 255}));
    }
}

TEST_F(EmojiTest, IsSharpAndWholeAtEverySize) {
    // Made smaller, a picture keeps the mean of what it shows: no pixel is dropped.
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
