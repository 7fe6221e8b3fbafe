// From titles to laid-out lines.

#include <string>

#include <benchmark/benchmark.h>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"

namespace qz {
namespace {

Ref<QzAnnoPalette> titlePalette() {
    const auto palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    const auto emphasis = palette->createAnno("Emphasis"_ns)->mutableCopy();
    emphasis->setAttribute(QzFontAttribute, "DejaVu Sans-Bold"_ns);
    emphasis->setAttribute(QzFontSizeAttribute, NSNumber::numberWithFloat(60));
    palette->replaceAnno(emphasis);
    return palette;
}

/// Formats and lays out a title of two lines with a running clock.
void titleOfEachFrame(benchmark::State& state, const char* before, const char* behind) {
    setStandardErrorHook([](std::string_view) {});
    const auto palette = titlePalette();
    const auto key = palette->findAnnoKey("Emphasis"_ns);
    const auto pipeline = QzAnnoStringToScreen::init();
    pipeline->setPalette(palette);
    pipeline->setScreenSize({1920, 1080}, {1920, 1080});
    uint32_t frame = 0;
    for (auto _ : state) {
        ++frame;
        std::string clock = std::to_string(frame / 25 % 60) + "." + std::to_string(frame % 25);
        const auto title = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(before + clock + behind));
        title->addAnno(key, {0, 8});
        pipeline->setAnnoString(title);
        benchmark::DoNotOptimize(pipeline->placeInFullScreen(true));
    }
    setStandardErrorHook({});
}
BENCHMARK_CAPTURE(titleOfEachFrame, latin, "Breaking news from the harbour ",
                  " s\nThe storm has reached the northern coast")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(titleOfEachFrame, arabic, "أخبار عاجلة من الميناء ", " ث\nوصلت العاصفة إلى الساحل الشمالي")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(titleOfEachFrame, japanese, "港からのニュース速報です ", " 秒\n嵐は北の海岸に到達しました")
    ->Unit(benchmark::kMicrosecond);

/// Lines of one long paragraph: time must be linear in the text.
void longParagraph(benchmark::State& state) {
    std::u16string text;
    while (text.size() < static_cast<size_t>(state.range(0))) text += u"Words of a paragraph that goes on, and on; ";
    const auto string = NSAttributedString::initWithString(NSString::stringWithCharacters(std::move(text)));
    for (auto _ : state) {
        const auto storage = NSTextStorage::init();
        const auto manager = NSLayoutManager::init();
        const auto container = NSTextContainer::initWithContainerSize({600, 0});
        container->replaceLayoutManager(manager);
        manager->replaceTextStorage(storage);
        storage->setAttributedString(*string);
        benchmark::DoNotOptimize(manager->usedRectForTextContainer(*container));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(longParagraph)
    ->RangeMultiplier(4)
    ->Range(4'000, 256'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
}  // namespace qz
