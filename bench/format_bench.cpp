// Converts annotated strings to attributed strings: one merge and one assembly per set of keys, then a walk over the
// runs.

#include <benchmark/benchmark.h>

#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"

namespace qz {
namespace {

constexpr uint32_t kAnnotations = 20;
constexpr uint32_t kWordLength = 6;  // including its space

/// Annotation 0 on the whole text, 1 on every other word, the others on increasingly sparse words, each with its own
/// size.
Ref<QzMutableAnnoString> annotatedWords(QzAnnoPalette& palette, uint32_t length) {
    std::u16string text;
    while (text.size() < length) text += u"words ";
    text.resize(length);
    const auto string = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::move(text)));
    for (uint32_t k = 0; k < kAnnotations; ++k) {
        const auto anno =
            palette.createAnno(NSString::stringWithUTF8String("Annotation " + std::to_string(k)))->mutableCopy();
        anno->setAttribute(QzFontSizeAttribute, NSNumber::numberWithFloat(static_cast<float>(20 + k)));
        palette.replaceAnno(anno);
        if (k == 0) string->addFrameAnno(anno->annokey());
        const uint32_t stride = kWordLength * (k == 1 ? 2 : 10 * k);
        for (uint32_t i = 0; k > 0 && i + kWordLength < length; i += stride)
            string->addAnno(anno->annokey(), {i, kWordLength - 1});
    }
    return string;
}

void formatString(benchmark::State& state) {
    const auto palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    const auto string = annotatedWords(*palette, static_cast<uint32_t>(state.range(0)));
    const auto formatter = QzAnnoStringFormatter::init();
    formatter->setPalette(palette);
    for (auto _ : state) benchmark::DoNotOptimize(formatter->attributedStringForObjectValue(string));
    state.counters["runs"] = static_cast<double>(string->runs().size());
    state.SetComplexityN(state.range(0));
}
BENCHMARK(formatString)
    ->Arg(125'000)
    ->Arg(250'000)
    ->Arg(500'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
}  // namespace qz
