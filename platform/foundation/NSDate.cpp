#include "platform/foundation/NSDate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>

namespace qz {

Ref<NSDate> NSDate::dateWithTimeIntervalSinceReferenceDate(double seconds) {
    return Ref<NSDate>(new NSDate(seconds));
}

bool NSDate::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* date = dynamic_cast<const NSDate*>(&other);
    return date && seconds_ == date->seconds_;
}

size_t NSDate::hash() const {
    return std::hash<double>()(seconds_);
}

std::string NSDate::description() const {
    using namespace std::chrono;
    // The year has four digits, so dates outside are shown as the nearest second inside.
    constexpr sys_seconds reference = sys_days(year(2001) / 1 / 1);
    constexpr double first = duration<double>(sys_seconds(sys_days(year(0) / 1 / 1)) - reference).count();
    constexpr double last = duration<double>(sys_seconds(sys_days(year(10000) / 1 / 1)) - reference).count() - 1;
    const double whole = std::isnan(seconds_) ? 0 : std::clamp(std::floor(seconds_), first, last);
    const sys_seconds time = reference + seconds(static_cast<int64_t>(whole));
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

}  // namespace qz
