#include "apps/qzanno-composer/TitleTimes.h"

#include <algorithm>
#include <cmath>

namespace qz::composer {
namespace {

// As subtitling guides recommend: about fifteen letters a second, neither too short nor too long.
constexpr double kCharactersPerSecond = 15;
constexpr double kShortestSeconds = 1.5;
constexpr double kLongestSeconds = 7;

}  // namespace

void giveTimes(std::vector<Title>& titles, size_t title) {
    Title& given = titles[title];
    const double start = title > 0 ? titles[title - 1].end.value_or(0) : 0;
    double end = start + std::clamp(given.text->length() / kCharactersPerSecond, kShortestSeconds, kLongestSeconds);
    const auto next = title + 1 < titles.size() ? titles[title + 1].start : std::nullopt;
    if (next && *next > start) end = std::min(end, *next);
    given.start = start;
    given.end = std::round(end * 1000) / 1000;
}

}  // namespace qz::composer
