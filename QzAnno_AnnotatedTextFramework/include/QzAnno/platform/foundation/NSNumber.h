#pragma once

#include <cstdint>
#include <variant>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An immutable number that remembers its kind, so that files distinguish integers from reals.
///
/// Two numbers are equal if their values are, whatever their kinds.
class NSNumber final : public NSObject {
public:
    /// The kinds; `numberWithLongLong` makes `int64_t`.
    using Value = std::variant<bool, int32_t, int64_t, float, double>;

    /// Stores the value in the kind that the function names.
    ///@{
    static Ref<NSNumber> numberWithBool(bool value);
    static Ref<NSNumber> numberWithInt(int32_t value);
    static Ref<NSNumber> numberWithLongLong(int64_t value);
    static Ref<NSNumber> numberWithFloat(float value);
    static Ref<NSNumber> numberWithDouble(double value);
    ///@}

    /// The number in its own kind.
    const Value& value() const { return value_; }
    /// Whether the kind is `float` or `double`.
    bool isReal() const;

    /// Whether the value is not 0; true for NaN.
    bool boolValue() const;
    /// Truncates toward zero. A value out of range is clamped; NaN becomes 0.
    ///@{
    int32_t intValue() const;
    int64_t longLongValue() const;
    ///@}
    /// Rounds to the type. A finite number out of range is clamped; infinities and NaN are kept.
    ///@{
    float floatValue() const;
    double doubleValue() const;
    ///@}

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSNumber"; }

private:
    explicit NSNumber(Value value) : value_(value) {}

    const Value value_;
};

/// Reads a value as a number: a number as itself, a text as the number it begins with, since people write such lists by
/// hand. Returns null for anything else. `whole`, if given, receives whether the text holds nothing but the number.
Ref<NSNumber> numberFrom(const Ref<NSObject>& value, bool* whole = nullptr);

/// The fewest digits that read back as the same number. Whole numbers have no point, and only numbers below 1e-4 or
/// from 1e15 on have an exponent. Other values are "nan", "inf" and "-inf". Independent of the locale.
///@{
std::string shortestDecimal(float value);
std::string shortestDecimal(double value);
///@}

}  // namespace qz
