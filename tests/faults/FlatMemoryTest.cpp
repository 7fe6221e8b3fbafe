// For a service that renders titles for weeks: memory stays flat once its caches are full.
#include <cstdio>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "platform/text/GlyphCache.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

/// Includes the libraries beneath.
double bytesInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// Words of Latin with accents, Hebrew, Arabic, and Chinese. The bounded caches of letters and words are then full
/// after some hundred titles.
std::vector<std::u16string> vocabulary(std::minstd_rand& random) {
    constexpr std::pair<char16_t, int> kAlphabets[] = {{u'A', 58}, {0xC0, 60}, {0x5D0, 27}, {0x627, 36}, {0x4E00, 200}};
    std::vector<std::u16string> words(100);
    for (std::u16string& word : words) {
        const auto& [first, count] = kAlphabets[random() % std::size(kAlphabets)];
        for (size_t letter = 0; letter < 2 + random() % 8; ++letter)
            word += static_cast<char16_t>(first + random() % static_cast<unsigned>(count));
    }
    return words;
}

/// Titles hardly ever repeat.
std::u16string randomTitle(const std::vector<std::u16string>& words, std::minstd_rand& random) {
    std::u16string text;
    for (size_t word = 0; word < 3 + random() % 5; ++word)
        text += words[random() % words.size()] + (word % 3 == 2 ? u'\n' : u' ');
    return text;
}

TEST(FlatMemory, TitlesLeaveNothingBehind) {
    constexpr int kWarm = 1000, kTitles = 10'000;
    setStandardErrorHook([](std::string_view) {});
    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({{QzFontSizeAttribute, test::number(18)},
                                                                 {QzBackgroundColorAttribute, test::rgba(0, 0, 0)},
                                                                 {QzBackgroundWidthAttribute, test::number(2)}});
    const Ref<QzAnnoKey> red = test::addAnnotation(*palette, "Red", {{QzTextColorAttribute, test::rgba(1, 0, 0)}});
    const auto kept = GlyphCache::init();
    kept->setBytesMax(1 << 20);  // full long before measuring begins

    std::minstd_rand random(3);
    const std::vector<std::u16string> words = vocabulary(random);
    auto screen = QzAnnoStringToScreen::init();
    double warm = 0, last = 0;
    for (int title = 0; title < kTitles; ++title) {
        // Replace pipelines too.
        if (title % 50 == 0) screen = QzAnnoStringToScreen::init();
        screen->layoutManager()->setGlyphCache(kept);
        screen->setPalette(palette);
        screen->setScreenSize({320, 180}, {320, 180});
        const auto string =
            QzMutableAnnoString::initWithString(NSString::stringWithCharacters(randomTitle(words, random)));
        string->addAnno(red, {0, string->length() / 2});
        screen->setAnnoString(string);
        ASSERT_TRUE(screen->bitmapInFullScreen(title % 2 == 0));
        // Measure after every fifty titles, so that the same objects are alive each time.
        if (title % 50 != 49) continue;
        if (title < kWarm) warm = std::max(warm, bytesInUse());
        last = bytesInUse();
    }
    setStandardErrorHook({});
    std::printf("%d titles: %.0f bytes at most after %d, %.0f at the end\n", kTitles, warm, kWarm, last);
    EXPECT_LE(last, warm * 1.02);
}

}  // namespace
}  // namespace qz
