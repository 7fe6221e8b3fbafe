#include <cstring>
#include <numeric>
#include <stdexcept>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "bench/peers/Case.h"

namespace qz::peers {
namespace {

constexpr uint32_t kKeys = 20;
constexpr uint32_t kWordLength = 6;  // including its space

/// Key 0 on the whole text, key 1 on every other word, the others on increasingly sparse words.
Ref<QzMutableAnnoString> annotatedWords(uint32_t length) {
    std::u16string text(length, u' ');
    for (uint32_t i = 0; i < length; ++i) text[i] = u"words "[i % kWordLength];
    const auto string = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::move(text)));
    for (uint32_t k = 0; k < kKeys; ++k) {
        const auto key = QzAnnoKey::keyWithName(NSString::stringWithUTF8String("Key " + std::to_string(k)));
        // Adds one position beyond the text now, so that no row grows while being timed.
        string->removeAnno(key, {0, length});
        if (k == 0) string->addFrameAnno(key);
        const uint32_t stride = kWordLength * (k == 1 ? 2 : 10 * k);
        for (uint32_t i = 0; k > 0 && i + kWordLength < length; i += stride) string->addAnno(key, {i, kWordLength - 1});
    }
    return string;
}

std::vector<std::string_view> rowsOf(const QzAnnoString& string) {
    std::vector<std::string_view> rows;
    for (const Ref<QzAnnoKey>& key : string.allKeys()->objects<QzAnnoKey>())
        rows.push_back(string.bitsFor(key)->bytes().substr(0, string.length()));
    return rows;
}

/// Reads every position once and counts those that are set.
uint64_t plainPass(const std::vector<std::string_view>& rows) {
    uint64_t count = 0;
    for (const std::string_view row : rows) {
        for (const char byte : row) count += byte == '1';
    }
    return count;
}

uint64_t setPositionsOf(const std::vector<QzAnnoString::Run>& runs) {
    return std::transform_reduce(
        runs.begin(), runs.end(), uint64_t{0}, std::plus<>(),
        [](const QzAnnoString::Run& run) { return uint64_t{run.range.length} * run.keys->count(); });
}

void walkCase(std::vector<Ratio>& ratios) {
    const auto string = annotatedWords(10'000'000);
    const auto rows = rowsOf(*string);
    uint64_t ofRuns = 0, ofQueries = 0, ofPass = 0;
    const auto times = interleavedMedians({
                                              [&](int) { ofRuns = setPositionsOf(string->runs()); },
                                              [&](int) {
                                                  ofQueries = 0;
                                                  for (Range run; run.end() < string->length();) {
                                                      const Ref<NSSet> keys = string->annotationsAtIndex(
                                                          static_cast<uint32_t>(run.end()), &run);
                                                      ofQueries += uint64_t{run.length} * keys->count();
                                                  }
                                              },
                                              [&](int) { ofPass = plainPass(rows); },
                                          },
                                          9);
    if (ofRuns != ofPass || ofQueries != ofPass) throw std::runtime_error("the walk and the plain pass differ");
    const std::string work = "10,000,000 characters, 20 annotations";
    ratios.push_back({work, "all runs", "pass over their bytes", times[0], times[2], 12});
    ratios.push_back({work, "query by query", "pass over their bytes", times[1], times[2], 12});
}

void insertCase(std::vector<Ratio>& ratios) {
    constexpr uint32_t kLength = 1'000'000, kMiddle = kLength / 2;
    const auto string = annotatedWords(kLength);
    const Ref<NSString> letter = "x"_ns;
    std::vector<std::vector<char>> rows(kKeys, std::vector<char>(kLength + 2, '0'));
    std::vector<char16_t> text(kLength + 1, u'w');
    std::vector<double> ours, moves;
    for (int round = 0; round < 41; ++round) {
        ours.push_back(millisecondsOf([&] { string->replaceCharactersInRange({kMiddle, 0}, letter); }));
        string->deleteCharactersInRange({kMiddle, 1});
        moves.push_back(millisecondsOf([&] {
            for (std::vector<char>& row : rows)
                std::memmove(&row[kMiddle + 1], &row[kMiddle], row.size() - kMiddle - 1);
            std::memmove(&text[kMiddle + 1], &text[kMiddle], (kLength - kMiddle) * sizeof text[0]);
        }));
    }
    ratios.push_back({"1,000,000 characters, 20 annotations", "insert one in the middle", "moves of rows and text",
                      median(ours), median(moves), 1.5});
}

}  // namespace

void modelCases(std::vector<Ratio>& ratios) {
    walkCase(ratios);
    insertCase(ratios);
}

}  // namespace qz::peers
