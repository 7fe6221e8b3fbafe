// Glyphs of layers and of paints, in the font that make_colour_font.py writes.

#include <gtest/gtest.h>

#include "platform/text/FontFace.h"
#include "platform/text/GlyphDrawing.h"
#include "tests/support/Pixels.h"

namespace qz {
namespace {

using test::boxOf;
using test::inkOf;
using test::Pixel;
using test::pixelAt;
using test::PixelBox;

constexpr Pixel kRed = {255, 0, 0, 255}, kGreen = {0, 255, 0, 255}, kBlue = {0, 0, 255, 255};

/// Draws a letter with 100 pixels to the em, so that the square lies between 10 and 90 from the left and from the top.
class ColourPaintTest : public testing::Test {
protected:
    Ref<NSBitmapImageRep> draw(char letter, const Ref<NSColor>& color, bool isSilhouette = false) {
        const auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 120, .pixelsHigh = 100});
        const auto context = NSGraphicsContext::graphicsContextWithBitmapImageRep(bitmap, true);
        context->setColor(color);
        const GlyphAtPlace place{font->glyphForCharacter(char32_t(letter)), font, {10, 90}};
        if (isSilhouette)
            fillGlyphs(*context, {&place, 1}, *cache);
        else
            drawGlyphs(*context, {&place, 1}, *cache);
        return bitmap;
    }
    Ref<NSBitmapImageRep> draw(char letter) { return draw(letter, NSColor::whiteColor()); }

    static void expectNear(Pixel pixel, Pixel expected, int tolerance) {
        EXPECT_NEAR(pixel.red, expected.red, tolerance) << pixel;
        EXPECT_NEAR(pixel.green, expected.green, tolerance) << pixel;
        EXPECT_NEAR(pixel.blue, expected.blue, tolerance) << pixel;
        EXPECT_NEAR(pixel.alpha, expected.alpha, tolerance) << pixel;
    }

    static std::shared_ptr<const FontFace> squares() {
        InstalledFont installed;
        installed.path = COLOUR_FONT;
        return FontFace::open(installed);
    }

    const std::shared_ptr<const FontFace> face = squares();
    const Ref<NSFont> font = std::make_shared<NSFont>(FontLibrary::shared(), face, 100.0f);
    const Ref<GlyphCache> cache = GlyphCache::init();
};

TEST_F(ColourPaintTest, LayersTakeThePaletteAndTheTextsColour) {
    const auto bitmap = draw('A', NSColor::colorWithCalibratedRed(1, 1, 0, 1));
    EXPECT_EQ(pixelAt(*bitmap, 20, 20), kRed);
    EXPECT_EQ(pixelAt(*bitmap, 50, 50), (Pixel{255, 255, 0, 255}));
    EXPECT_EQ(inkOf(*bitmap), (PixelBox{10, 10, 90, 90}));
    // Another colour is another picture, also from the cache; alpha thins all layers.
    EXPECT_EQ(pixelAt(*draw('A', NSColor::whiteColor()), 50, 50), (Pixel{255, 255, 255, 255}));
    expectNear(pixelAt(*draw('A', NSColor::colorWithCalibratedRed(1, 1, 0, 0.5f)), 20, 20), {128, 0, 0, 128}, 1);
}

TEST_F(ColourPaintTest, GradientsRunWhereTheFontSays) {
    const auto linear = draw('B');
    for (const int x : {15, 30, 50, 70, 85}) {
        const double t = (x + 0.5 - 10) / 80;
        expectNear(pixelAt(*linear, x, 25), {uint8_t(255 * (1 - t)), 0, uint8_t(255 * t), 255}, 3);
        EXPECT_EQ(pixelAt(*linear, x, 25), pixelAt(*linear, x, 80)) << "the same all the way down";
    }
    const auto radial = draw('C');
    expectNear(pixelAt(*radial, 50, 50), kGreen, 1);
    expectNear(pixelAt(*radial, 50, 35), kGreen, 1);
    expectNear(pixelAt(*radial, 79, 49), {0, 131, 124, 255}, 6);  // three quarters of the way
    expectNear(pixelAt(*radial, 12, 12), kBlue, 1);
    // Anticlockwise from the right: red above the axis, blue below, half way round on the left.
    const auto sweep = draw('D');
    expectNear(pixelAt(*sweep, 88, 49), kRed, 6);
    expectNear(pixelAt(*sweep, 88, 50), kBlue, 6);
    expectNear(pixelAt(*sweep, 50, 12), {191, 0, 64, 255}, 6);
    expectNear(pixelAt(*sweep, 12, 50), {128, 0, 128, 255}, 6);
}

TEST_F(ColourPaintTest, TransformsAndCompositionNest) {
    const auto mirrored = draw('E');
    EXPECT_EQ(inkOf(*mirrored), (PixelBox{60, 10, 100, 90})) << "the left half, mirrored and moved";
    expectNear(pixelAt(*mirrored, 80, 50), {0, 128, 0, 128}, 1);
    const auto cutOut = draw('F');
    EXPECT_EQ(pixelAt(*cutOut, 20, 20), kBlue);
    EXPECT_EQ(pixelAt(*cutOut, 50, 50).alpha, 0);
    const auto turned = draw('H');
    EXPECT_NEAR(inkOf(*turned).height(), 100, 1) << "the diagonal of 113, cut by the bitmap";
    EXPECT_EQ(pixelAt(*turned, 50, 50), kGreen);
    EXPECT_EQ(pixelAt(*turned, 15, 15).alpha, 0);
}

TEST_F(ColourPaintTest, SilhouettesCoverWhatIsPainted) {
    const struct {
        char letter;
        PixelBox box;
    } cases[] = {{'A', {10, 10, 90, 90}}, {'E', {60, 10, 100, 90}}, {'F', {10, 10, 90, 90}}};
    for (const auto& [letter, box] : cases) {
        SCOPED_TRACE(letter);
        const auto bitmap = draw(letter, NSColor::colorWithCalibratedRed(0, 0, 1, 1), true);
        EXPECT_EQ(boxOf(*bitmap, [](Pixel p) { return p == kBlue; }), box);
        EXPECT_EQ(pixelAt(*bitmap, (box.left + box.right) / 2, 50), kBlue);
    }
}

TEST_F(ColourPaintTest, AGlyphThatPaintsItselfEnds) {
    EXPECT_EQ(pixelAt(*draw('G'), 30, 50), kRed);
    EXPECT_EQ(inkOf(*draw('G', NSColor::whiteColor(), true)), (PixelBox{10, 10, 50, 90}));
}

}  // namespace
}  // namespace qz
