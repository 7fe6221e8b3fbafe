#pragma once

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An immutable point in time, in seconds from 2001-01-01T00:00:00Z, leap seconds not counted.
class NSDate final : public NSObject {
public:
    /// Any number of seconds, fractions and those before 2001 (below 0) included. Not-a-number makes a date that equals
    /// itself alone.
    static Ref<NSDate> dateWithTimeIntervalSinceReferenceDate(double seconds);

    /// The number that the date was made of.
    double timeIntervalSinceReferenceDate() const { return seconds_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    /// "YYYY-MM-DDTHH:MM:SSZ", the fraction of a second dropped; the proleptic Gregorian calendar. A date outside the
    /// years 0 to 9999 is shown as their first or last second, not-a-number as the start of 2001.
    std::string description() const override;
    std::string className() const override { return "NSDate"; }

private:
    explicit NSDate(double seconds) : seconds_(seconds) {}

    const double seconds_;
};

}  // namespace qz
