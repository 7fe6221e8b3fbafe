#pragma once

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An immutable point in time, in seconds from 2001-01-01T00:00:00Z, leap seconds not counted.
class NSDate final : public NSObject {
public:
    /// Takes any number of seconds, with fractions; negative before 2001. NaN makes a date that equals only itself.
    static Ref<NSDate> dateWithTimeIntervalSinceReferenceDate(double seconds);

    /// The seconds as given.
    double timeIntervalSinceReferenceDate() const { return seconds_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    /// "YYYY-MM-DDTHH:MM:SSZ" in the proleptic Gregorian calendar, without the fraction of a second. A date outside the
    /// years 0 to 9999 is shown as their first or last second, and NaN as the start of 2001.
    std::string description() const override;
    std::string className() const override { return "NSDate"; }

private:
    explicit NSDate(double seconds) : seconds_(seconds) {}

    const double seconds_;
};

}  // namespace qz
