// Archives of many annotated strings, and of a palette beside its XML property list.

#include <benchmark/benchmark.h>

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {
namespace {

Ref<QzAnnoPalette> paletteOf(int annotations) {
    setStandardErrorHook([](std::string_view) {});
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    for (int i = 0; i < annotations; ++i) {
        const auto anno =
            palette->createAnno(NSString::stringWithUTF8String("Annotation " + std::to_string(i)))->mutableCopy();
        anno->setAttribute(QzFontAttribute, "Noto Sans Bold"_ns);
        anno->setAttribute(QzFontSizeAttribute, NSNumber::numberWithFloat(static_cast<float>(20 + i)));
        anno->setAttribute(QzTextColorAttribute, NSColor::colorWithCalibratedRed(1, 0.25f, 0.5f, 0.75f));
        palette->replaceAnno(anno);
    }
    return palette;
}

/// Titles of 40 characters with two annotations each, as from a caption file.
Ref<NSArray> titlesOf(const QzAnnoPalette& palette, int64_t count) {
    std::vector<Ref<NSObject>> titles;
    for (int64_t i = 0; i < count; ++i) {
        const auto title = QzMutableAnnoString::initWithString(
            NSString::stringWithUTF8String("A caption of about forty characters " + std::to_string(i % 10000)));
        title->addAnno(palette.annoKeyAtPriority(static_cast<int32_t>(1 + i % 20)), {2, 7});
        title->addFrameAnno(palette.annoKeyAtPriority(static_cast<int32_t>(1 + i % 7)));
        titles.push_back(title->copy());
    }
    return NSArray::arrayWithObjects(std::move(titles));
}

void packTitles(benchmark::State& state) {
    const auto palette = paletteOf(20);
    const auto titles = titlesOf(*palette, state.range(0));
    Ref<NSData> data;
    for (auto _ : state) data = QzTokeningArchiver::archivedDataWithRootObject(titles, {palette});
    state.counters["bytes a title"] = static_cast<double>(data->length()) / static_cast<double>(state.range(0));
    state.SetComplexityN(state.range(0));
}

void readTitles(benchmark::State& state) {
    const auto palette = paletteOf(20);
    const auto data = QzTokeningArchiver::archivedDataWithRootObject(titlesOf(*palette, state.range(0)), {palette});
    for (auto _ : state) {
        const auto titles = QzTokeningUnarchiver::unarchiveObjectWithData(data, {palette});
        if (!titles) state.SkipWithError("the archive cannot be read");
    }
    state.SetComplexityN(state.range(0));
}

void writePaletteArchive(benchmark::State& state) {
    const auto palette = paletteOf(1000);
    Ref<NSData> data;
    for (auto _ : state) data = NSArchiver::archivedDataWithRootObject(palette);
    state.counters["bytes"] = static_cast<double>(data->length());
}

void writePalettePropertyList(benchmark::State& state) {
    const auto palette = paletteOf(1000);
    Ref<NSData> data;
    for (auto _ : state) data = palette->pListData();
    state.counters["bytes"] = static_cast<double>(data->length());
}

void readPaletteArchive(benchmark::State& state) {
    const auto data = NSArchiver::archivedDataWithRootObject(paletteOf(1000));
    for (auto _ : state) benchmark::DoNotOptimize(NSUnarchiver::unarchiveObjectWithData(data));
}

void readPalettePropertyList(benchmark::State& state) {
    const auto data = paletteOf(1000)->pListData();
    for (auto _ : state) benchmark::DoNotOptimize(QzAnnoPalette::paletteFromPListData(*data));
}

BENCHMARK(packTitles)
    ->RangeMultiplier(2)
    ->Range(12'500, 100'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(readTitles)
    ->RangeMultiplier(2)
    ->Range(12'500, 100'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(writePaletteArchive)->Unit(benchmark::kMillisecond);
BENCHMARK(writePalettePropertyList)->Unit(benchmark::kMillisecond);
BENCHMARK(readPaletteArchive)->Unit(benchmark::kMillisecond);
BENCHMARK(readPalettePropertyList)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qz
