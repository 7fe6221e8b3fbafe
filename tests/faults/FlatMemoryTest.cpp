// A service that renders titles for weeks: memory stays flat once its caches have filled.
#include <random>

#include <gtest/gtest.h>
#include <malloc.h>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "platform/foundation/NSLog.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

/// Of the libraries beneath too.
double bytesInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

std::u16string randomTitle(std::minstd_rand& random) {
    // Latin with accents, Hebrew, Arabic, and Chinese, of which hardly a title is like another.
    constexpr std::pair<char16_t, int> kAlphabets[] = {
        {u'A', 58}, {0xC0, 60}, {0x5D0, 27}, {0x627, 36}, {0x4E00, 3000}};
    std::u16string text;
    for (size_t word = 0; word < 3 + random() % 5; ++word) {
        const auto& [first, count] = kAlphabets[random() % std::size(kAlphabets)];
        for (size_t letter = 0; letter < 2 + random() % 8; ++letter)
            text += static_cast<char16_t>(first + random() % static_cast<unsigned>(count));
        text += word % 3 == 2 ? u'\n' : u' ';
    }
    return text;
}

TEST(FlatMemory, TitlesLeaveNothingBehind) {
    constexpr int kWarm = 1000, kTitles = 4000;
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({{QzFontSizeAttribute, test::number(18)},
                                                                 {QzBackgroundColorAttribute, test::rgba(0, 0, 0)},
                                                                 {QzBackgroundWidthAttribute, test::number(2)}});
    const Ref<QzAnnoKey> red = test::addAnnotation(*palette, "Red", {{QzTextColorAttribute, test::rgba(1, 0, 0)}});
    const auto kept = GlyphCache::init();
    kept->setBytesMax(1 << 20);  // full long before the measuring begins

    std::minstd_rand random(3);
    auto screen = QzAnnoStringToScreen::init();
    double warm = 0, most = 0;
    for (int title = 0; title < kTitles; ++title) {
        // Pipelines come and go as well.
        if (title % 50 == 0) screen = QzAnnoStringToScreen::init();
        screen->layoutManager()->setGlyphCache(kept);
        screen->setPalette(palette);
        screen->setScreenSize({320, 180}, {320, 180});
        const auto string = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(randomTitle(random)));
        string->addAnno(red, {0, string->length() / 2});
        screen->setAnnoString(string);
        ASSERT_TRUE(screen->bitmapInFullScreen(title % 2 == 0));
        // Behind the last pipeline of fifty, so that each time the same things are alive.
        if (title % 50 != 49) continue;
        if (title < kWarm) warm = std::max(warm, bytesInUse());
        most = bytesInUse();
    }
    setLogHook({});
    setStandardErrorHook({});
    EXPECT_LE(most, warm * 1.02) << warm << " bytes after " << kWarm << " titles, " << most << " after " << kTitles;
}

}  // namespace
}  // namespace qz
