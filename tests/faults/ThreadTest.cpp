// Pipelines on distinct threads, each with its own palette and strings, sharing fonts: each draws the same as a single
// thread. The preset "tsan" detects races.
#include <latch>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

constexpr int kTitles = 12;

/// Titles in several scripts, with a font that falls back, written to an archive and read again between; their pixels.
std::vector<std::string> draw() {
    const char* const texts[] = {"Title ffi", "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "\xD8\xB3\xD9\x84\xD8\xA7\xD9\x85",
                                 "\xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80"};
    const Ref<QzAnnoPalette> styles = test::strokedPalette(24, 3);
    const auto screen = QzAnnoStringToScreen::init();
    screen->setPalette(styles);
    screen->setScreenSize({240, 90}, {240, 90});
    std::vector<std::string> drawn;
    for (int title = 0; title < kTitles; ++title) {
        const auto text = std::string(texts[title % 4]) + " " + std::to_string(title);
        const auto string = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text));
        string->addAnno(styles->annoKeyAtPriority(1), {1, 3});
        const Ref<NSData> archive = QzTokeningArchiver::archivedDataWithRootObject(string, {styles});
        const Ref<NSObject> read = QzTokeningUnarchiver::unarchiveObjectWithData(archive, {styles});
        screen->setAnnoString(std::dynamic_pointer_cast<QzAnnoString>(read));
        const Ref<NSBitmapImageRep> bitmap = screen->bitmapInFullScreen(true);
        drawn.emplace_back(reinterpret_cast<const char*>(bitmap->row(0)), size_t{240} * 90 * 4);
    }
    return drawn;
}

TEST(Threads, DrawWhatAThreadAloneDraws) {
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
    constexpr int kThreads = 4;
    std::vector<std::vector<std::string>> drawn(kThreads);
    // Start together, before anything is cached, so that all threads open fonts and find fallbacks concurrently.
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (std::vector<std::string>& titles : drawn) {
        threads.emplace_back([&start, &titles] {
            start.arrive_and_wait();
            titles = draw();
        });
    }
    for (std::thread& thread : threads) thread.join();
    const std::vector<std::string> alone = draw();
    setLogHook({});
    setStandardErrorHook({});
    ASSERT_EQ(alone.size(), size_t{kTitles});
    for (const std::vector<std::string>& titles : drawn) EXPECT_TRUE(titles == alone);
}

}  // namespace
}  // namespace qz
