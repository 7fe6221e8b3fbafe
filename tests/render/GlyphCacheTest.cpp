#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "platform/text/GlyphCache.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/Pixels.h"

namespace qz {
namespace {

using namespace test;

constexpr NSSize kScreen = {960, 400};

Ref<QzAnnoStringToScreen> pipelineFor(const Ref<QzAnnoPalette>& palette, const std::string& text, float scale = 1) {
    const auto pipeline = QzAnnoStringToScreen::init();
    pipeline->setScreenSize(kScreen, {kScreen.width * scale, kScreen.height * scale});
    pipeline->setPalette(palette);
    pipeline->setAnnoString(QzAnnoString::initWithString(NSString::stringWithUTF8String(text)));
    return pipeline;
}

int largestDifference(const NSBitmapImageRep& a, const NSBitmapImageRep& b) {
    int worst = 0;
    for (int32_t y = 0; y < a.pixelsHigh(); ++y) {
        for (int32_t i = 0; i < 4 * a.pixelsWide(); ++i) worst = std::max(worst, std::abs(a.row(y)[i] - b.row(y)[i]));
    }
    return worst;
}

/// A palette whose attributes are drawn from a seed: sizes, slants, layers with offsets between pixels, translucency.
Ref<QzAnnoPalette> randomPalette(std::mt19937& random) {
    const auto between = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
    const auto color = [&] {
        return rgba(float(between(0, 1)), float(between(0, 1)), float(between(0, 1)), between(0, 1) < 0.5 ? 1 : 0.4f);
    };
    const auto point = [&] { return NSStringFromPoint({float(between(-9, 9)), float(between(-9, 9))}); };
    Attributes attributes = {
        {QzFontAttribute, random() % 2 ? "DejaVuSans"_ns : "NotoSerif-Bold"_ns},
        {QzFontSizeAttribute, number(between(8, 90))},
        {QzTextColorAttribute, color()},
        {QzHorizontalAlignmentAttribute, integer(int32_t(random() % 3))},
        {QzVerticalAlignmentAttribute, integer(1)},
        {QzBackgroundColorAttribute, color()},
        {QzBackgroundWidthAttribute, number(random() % 4 ? between(0.3, 14) : 0)},
        {QzBackground2ColorAttribute, color()},
        {QzBackground2WidthAttribute, number(between(0, 9))},
        {QzBackground2OffsetAttribute, point()},
        {NSObliquenessAttributeName, number(random() % 2 ? between(-0.4, 0.4) : 0)},
    };
    return paletteWithGlobals(attributes);
}

TEST(GlyphCache, KeptGlyphsDrawAsFreshOnes) {
    const LogCapture log;
    const char* texts[] = {"Aeroplane", "\u0645\u0631\u062d\u0628\u0627 \U0001F600", "e\u0301\u0306 fi \u2764\uFE0F",
                           "\u0928\u092e\u0938\u094d\u0924\u0947"};
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto palette = randomPalette(random);
        const auto pipeline = pipelineFor(palette, texts[seed % 4], seed % 5 == 0 ? 1.7f : 1);
        const auto& manager = pipeline->layoutManager();
        manager->setQualityFactor(seed % 3 == 0 ? 0.4f : 1);
        manager->setMergesLayers(seed % 2 == 0);
        if (seed % 7 == 0) manager->setAntialiasing(false);
        const auto first = pipeline->bitmapInFullScreen(true);
        const uint64_t misses = manager->glyphCache()->statistics().misses;
        const auto second = pipeline->bitmapInFullScreen(true);
        // At a larger scale glyphs cross the image's edge, and those beyond it are not cached.
        if (seed % 5 != 0) {
            EXPECT_EQ(manager->glyphCache()->statistics().misses, misses) << "all kept";
        }
        EXPECT_EQ(largestDifference(*first, *second), 0);
        EXPECT_NE(inkOf(*first), PixelBox{});
        manager->glyphCache()->setBytesMax(0);
        EXPECT_LE(largestDifference(*first, *pipeline->bitmapInFullScreen(true)), 2) << "nothing kept";
        manager->glyphCache()->setBytesMax(100'000);
        EXPECT_LE(largestDifference(*first, *pipeline->bitmapInFullScreen(true)), 2) << "some kept";
    }
}

TEST(GlyphCache, StaysWithinItsBoundAndCountsWhatItDoes) {
    const LogCapture log;
    const auto palette = paletteWithGlobals({{QzFontAttribute, "DejaVuSans"_ns},
                                             {QzFontSizeAttribute, number(40)},
                                             {QzTextColorAttribute, NSColor::whiteColor()}});
    const auto pipeline = pipelineFor(palette, "aaaa");
    const Ref<GlyphCache> cache = GlyphCache::init();
    pipeline->layoutManager()->setGlyphCache(cache);
    pipeline->bitmapInFullScreen(true);
    const auto once = cache->statistics();
    EXPECT_EQ(once.hits + once.misses, 4u);
    EXPECT_EQ(once.images, once.misses);
    EXPECT_GT(once.bytes, 400u * once.images) << "some 22 by 22 pixels each";

    constexpr uint64_t kBound = 30'000;
    cache->setBytesMax(kBound);
    for (const char* text : {"bcdefghijklm", "nopqrstuvwxyz", "ABCDEFGHIJKLM", "aaaa"}) {
        pipeline->setAnnoString(QzAnnoString::initWithString(NSString::stringWithUTF8String(text)));
        pipeline->bitmapInFullScreen(true);
        EXPECT_LE(cache->statistics().bytes, kBound);
    }
    EXPECT_GT(cache->statistics().evictions, 0u);
    EXPECT_GT(cache->statistics().misses, 39u) << "the first letters were used longest ago, and are gone";
    cache->removeAll();
    EXPECT_EQ(cache->statistics().images, 0u);
    EXPECT_EQ(cache->statistics().bytes, 0u);
}

// When moved by tenths of a pixel, the middle of a letter follows within a sixteenth, half the grid's step.
TEST(GlyphCache, TenthsOfAPixelMoveGlyphs) {
    const LogCapture log;
    // The layer moves: a text box stands on whole points.
    const auto middleAt = [&](double x, double y) {
        const auto palette =
            paletteWithGlobals({{QzFontAttribute, "DejaVuSans"_ns},
                                {QzFontSizeAttribute, number(40)},
                                {QzTextColorAttribute, rgba(0, 0, 0, 0)},
                                {QzBackgroundColorAttribute, rgba(0, 0, 0)},
                                {QzBackgroundWidthAttribute, number(1)},
                                {QzBackgroundOffsetAttribute, NSStringFromPoint({float(x), float(y)})}});
        const auto bitmap = pipelineFor(palette, "o")->bitmapInFullScreen(true);
        double sum = 0, sumX = 0, sumY = 0;
        for (int32_t row = 0; row < bitmap->pixelsHigh(); ++row) {
            for (int32_t column = 0; column < bitmap->pixelsWide(); ++column) {
                const double alpha = pixelAt(*bitmap, column, row).alpha;
                sum += alpha;
                sumX += alpha * column;
                sumY += alpha * row;
            }
        }
        return std::pair(sumX / sum, sumY / sum);
    };
    const auto start = middleAt(20, 20);
    double smallest = 0, largest = 0;
    for (int tenth = 1; tenth <= 20; ++tenth) {
        const auto [x, y] = middleAt(20 + tenth / 10.0, 20 + tenth / 10.0);
        for (const double error : {x - start.first - tenth / 10.0, y - start.second - tenth / 10.0}) {
            smallest = std::min(smallest, error);
            largest = std::max(largest, error);
        }
    }
    EXPECT_LE(largest - smallest, 0.125 + 0.01);
}

}  // namespace
}  // namespace qz
