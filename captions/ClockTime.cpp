#include "captions/ClockTime.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "captions/AsciiText.h"

namespace qz {
namespace {

constexpr double kSecondsMax = 1e9;

std::optional<double> unsignedNumber(std::string_view text) {
    double number = 0;
    if (!std::ranges::all_of(text, [](char c) { return isDigit(c) || c == '.'; })) return {};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string clockOf(double seconds) {
    const auto milliseconds = std::llround(seconds * 1000);
    char text[40];
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld.%03lld", milliseconds / 3600000, milliseconds / 60000 % 60,
                  milliseconds / 1000 % 60, milliseconds % 1000);
    return text;
}

std::optional<double> secondsOfClock(std::string_view text) {
    std::string usual(trimmed(text));
    std::ranges::replace(usual, ',', '.');
    std::string_view rest = usual;
    double seconds = 0;
    for (int field = 1;; ++field) {
        const size_t colon = rest.find(':');
        const std::string_view digits = rest.substr(0, colon);
        const std::optional<double> value = unsignedNumber(digits);
        const bool isLast = colon == std::string_view::npos;
        // Only the seconds have a fraction, and only the first field goes beyond 59.
        const bool isField = value && field <= 3 && (field == 1 || *value < 60) &&
                             (isLast || digits.find('.') == std::string_view::npos);
        if (!isField) return {};
        seconds = seconds * 60 + *value;
        if (isLast) break;
        rest.remove_prefix(colon + 1);
    }
    if (seconds > kSecondsMax) return {};
    return std::round(seconds * 1000) / 1000;
}

}  // namespace qz
