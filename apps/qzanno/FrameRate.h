#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qz::tool {

/// Frames per second, as a fraction, so that times do not drift. Frame n is shown from n / rate seconds on.
struct FrameRate {
    int64_t numerator = 25;  ///< 1 to 1,000,000
    int64_t denominator = 1;

    /// The first frame shown at or after the time, which is rounded to milliseconds, up to 31 years.
    int64_t firstFrameAt(double seconds) const;
    /// The start of the frame, rounded down.
    int64_t microsecondsOf(int64_t frame) const;
};

/// Parses "25", "29.97" or "30000/1001"; returns no value for anything else.
std::optional<FrameRate> parsedFrameRate(std::string_view text);

}  // namespace qz::tool
