#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qz {

/// Seconds as "00:01:02.500", to the nearest millisecond.
std::string clockOf(double seconds);

/// The seconds of a time as people write it, "90", "62,5", "1:02.5" or "0:01:02.500", to the nearest millisecond.
/// Returns no value for anything else and for more than 31 years.
std::optional<double> secondsOfClock(std::string_view text);

}  // namespace qz
