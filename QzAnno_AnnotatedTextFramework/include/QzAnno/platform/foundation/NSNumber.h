#pragma once

#include <cstdint>
#include <variant>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An immutable number that remembers the kind it was made of, so that files keep integers and reals apart.
///
/// Equal when the values are equal, whatever the kinds.
class NSNumber final : public NSObject {
public:
    /// The kinds; `int64_t` is that of `numberWithLongLong`.
    using Value = std::variant<bool, int32_t, int64_t, float, double>;

    /// The value as given, in the kind that the name says.
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

    /// Whether it is anything but 0; not-a-number is.
    bool boolValue() const;
    /// Truncated toward zero. What lies outside the asked kind becomes its nearest value, and not-a-number 0.
    ///@{
    int32_t intValue() const;
    int64_t longLongValue() const;
    ///@}
    /// Rounded to the asked kind. A finite number beyond it becomes its largest of that sign; infinities and
    /// not-a-number stay what they are.
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

/// What a value counts as where a number is due: a number is itself, and a text is the number that it begins with, as
/// in a list that a person wrote. Null for anything else. `whole`, when given, receives whether the text is nothing but
/// that number.
Ref<NSNumber> numberFrom(const Ref<NSObject>& value, bool* whole = nullptr);

/// The fewest digits that read back as the same number; whole numbers have no point, and only numbers below 1e-4 or
/// from 1e15 on have an exponent. "nan", "inf" and "-inf" otherwise. The same in every locale.
///@{
std::string shortestDecimal(float value);
std::string shortestDecimal(double value);
///@}

}  // namespace qz
