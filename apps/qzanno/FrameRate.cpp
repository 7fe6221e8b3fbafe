#include "apps/qzanno/FrameRate.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace qz::tool {
namespace {

constexpr int64_t kPartMax = 1000000;
constexpr double kMillisecondsMax = 1e12;

std::optional<int64_t> parsedPart(std::string_view text) {
    int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end && value >= 0 && value <= kPartMax ? std::optional(value) : std::nullopt;
}

}  // namespace

int64_t FrameRate::firstFrameAt(double seconds) const {
    const auto milliseconds = static_cast<int64_t>(std::llround(std::clamp(seconds * 1000, 0.0, kMillisecondsMax)));
    const int64_t unit = 1000 * denominator;
    return (milliseconds * numerator + unit - 1) / unit;
}

int64_t FrameRate::microsecondsOf(int64_t frame) const {
    // In two steps, since frame number x 1,000,000 x denominator may overflow.
    const int64_t periods = frame / numerator;
    return periods * denominator * 1000000 + frame % numerator * denominator * 1000000 / numerator;
}

std::optional<FrameRate> parsedFrameRate(std::string_view text) {
    FrameRate rate;
    const size_t slash = text.find('/');
    const size_t point = text.find('.');
    if (point != std::string_view::npos) {
        const std::string_view fraction = text.substr(point + 1);
        const auto whole = parsedPart(text.substr(0, point));
        const auto part = parsedPart(fraction);
        if (!whole || !part || fraction.size() > 3) return {};
        for (size_t i = 0; i < fraction.size(); ++i) rate.denominator *= 10;
        rate.numerator = *whole * rate.denominator + *part;
    } else {
        const auto numerator = parsedPart(text.substr(0, slash));
        const auto denominator = slash == std::string_view::npos ? 1 : parsedPart(text.substr(slash + 1));
        if (!numerator || !denominator) return {};
        rate = {*numerator, *denominator};
    }
    if (rate.numerator == 0 || rate.denominator == 0) return {};
    const int64_t common = std::gcd(rate.numerator, rate.denominator);
    rate = {rate.numerator / common, rate.denominator / common};
    return rate.numerator <= kPartMax ? std::optional(rate) : std::nullopt;
}

}  // namespace qz::tool
