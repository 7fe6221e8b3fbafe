// Annotated strings of up to a million characters: reading a whole string must take linear time.

#include <benchmark/benchmark.h>

#include "QzAnno/model/QzMutableAnnoString.h"

namespace qz {
namespace {

constexpr uint32_t kKeys = 20;
constexpr uint32_t kWordLength = 6;  // including its space

/// Key 0 on the whole text, key 1 on every other word, the others on increasingly sparse words.
Ref<QzMutableAnnoString> annotatedWords(uint32_t length) {
    std::u16string text;
    while (text.size() < length) text += u"words ";
    text.resize(length);
    const auto string = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::move(text)));
    for (uint32_t k = 0; k < kKeys; ++k) {
        const auto key = QzAnnoKey::keyWithName(NSString::stringWithUTF8String("Key " + std::to_string(k)));
        if (k == 0) string->addFrameAnno(key);
        const uint32_t stride = kWordLength * (k == 1 ? 2 : 10 * k);
        for (uint32_t i = 0; k > 0 && i + kWordLength < length; i += stride) string->addAnno(key, {i, kWordLength - 1});
    }
    return string;
}

uint32_t lengthOf(const benchmark::State& state) {
    return static_cast<uint32_t>(state.range(0));
}

void walkByQueries(benchmark::State& state) {
    const auto string = annotatedWords(lengthOf(state));
    size_t runs = 0;
    for (auto _ : state) {
        for (Range run; run.end() < string->length(); ++runs) {
            benchmark::DoNotOptimize(string->annotationsAtIndex(run.location + run.length, &run));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(runs));
    state.SetComplexityN(state.range(0));
}

void walkRuns(benchmark::State& state) {
    const auto string = annotatedWords(lengthOf(state));
    for (auto _ : state) benchmark::DoNotOptimize(string->runs());
    state.SetComplexityN(state.range(0));
}

/// The edit makes the bit set search for its run again.
void frameAfterEdit(benchmark::State& state) {
    const auto string = annotatedWords(lengthOf(state));
    const auto key = string->frame()->objects<QzAnnoKey>().front();
    for (auto _ : state) {
        string->addAnno(key, {0, 1});
        benchmark::DoNotOptimize(string->frame());
    }
    state.SetComplexityN(state.range(0));
}

void equalityWithCopy(benchmark::State& state) {
    const auto string = annotatedWords(lengthOf(state));
    const auto copy = string->mutableCopy();
    for (auto _ : state) {
        if (!string->isEqualToAnnoString(*copy)) state.SkipWithError("a copy must be equal");
    }
    state.SetComplexityN(state.range(0));
}

/// One keystroke and its deletion in the middle of the text.
void typeAndDelete(benchmark::State& state) {
    const auto string = annotatedWords(lengthOf(state));
    const Ref<NSString> letter = "x"_ns;
    const uint32_t middle = string->length() / 2;
    for (auto _ : state) {
        string->replaceCharactersInRange({middle, 0}, letter);
        string->deleteCharactersInRange({middle, 1});
    }
    state.SetComplexityN(state.range(0));
}

/// Toggles a key over the whole text run by run, as a text view does for its selection, alternating queries and edits.
void toggleRunByRun(benchmark::State& state) {
    const auto string = annotatedWords(lengthOf(state));
    const auto key = QzAnnoKey::keyWithName("New"_ns);
    for (auto _ : state) {
        for (uint32_t i = 0; i < string->length();) {
            Range run;
            string->annotationsAtIndex(i, &run, {i, string->length() - i});
            string->toggleAnno(key, run);
            i = run.location + run.length;
        }
    }
    state.SetComplexityN(state.range(0));
}

void lengths(benchmark::internal::Benchmark* benchmark) {
    for (int64_t length : {125'000, 250'000, 500'000, 1'000'000}) benchmark->Arg(length);
    benchmark->Unit(benchmark::kMillisecond)->Complexity();
}

BENCHMARK(walkByQueries)->Apply(lengths);
BENCHMARK(walkRuns)->Apply(lengths);
BENCHMARK(frameAfterEdit)->Apply(lengths);
BENCHMARK(equalityWithCopy)->Apply(lengths);
BENCHMARK(typeAndDelete)->Apply(lengths);
BENCHMARK(toggleRunByRun)->Apply(lengths);

}  // namespace
}  // namespace qz
