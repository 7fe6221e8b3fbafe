#pragma once

#include "platform/foundation/NSObject.h"

namespace qz {

/// An immutable point in time, in seconds from 2001-01-01T00:00:00Z, leap seconds not counted.
class NSDate final : public NSObject {
public:
    static Ref<NSDate> dateWithTimeIntervalSinceReferenceDate(double seconds);

    double timeIntervalSinceReferenceDate() const { return seconds_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    /// "YYYY-MM-DDTHH:MM:SSZ", the fraction of a second dropped; the proleptic Gregorian calendar.
    std::string description() const override;
    std::string className() const override { return "NSDate"; }

private:
    explicit NSDate(double seconds) : seconds_(seconds) {}

    const double seconds_;
};

}  // namespace qz
