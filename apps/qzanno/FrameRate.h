#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qz::tool {

/// Frames a second, as a fraction, so that no time drifts. Frame n is shown from n / rate seconds on.
struct FrameRate {
    int64_t numerator = 25;  ///< 1 to 1,000,000
    int64_t denominator = 1;

    /// The first frame that is shown at the time or later, which is counted in whole milliseconds, up to 31 years.
    int64_t firstFrameAt(double seconds) const;
    /// When the frame begins, rounded down.
    int64_t microsecondsOf(int64_t frame) const;
};

/// "25", "29.97" or "30000/1001"; none for anything else.
std::optional<FrameRate> parsedFrameRate(std::string_view text);

}  // namespace qz::tool
