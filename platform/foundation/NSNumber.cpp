#include "QzAnno/platform/foundation/NSNumber.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {
namespace {

template <class Integer>
Integer saturated(double value) {
    if (std::isnan(value)) return 0;
    // Compares the upper bound as a power of two, which a double holds exactly.
    if (value >= -static_cast<double>(std::numeric_limits<Integer>::min())) return std::numeric_limits<Integer>::max();
    if (value <= static_cast<double>(std::numeric_limits<Integer>::min())) return std::numeric_limits<Integer>::min();
    return static_cast<Integer>(value);
}

// Numbers of everyday size have no exponent, even where one would be shorter.
template <class Real>
std::string shortest(Real value) {
    constexpr Real smallest = static_cast<Real>(1e-4);
    constexpr Real largest = static_cast<Real>(1e15);
    const Real size = std::abs(value);
    const bool isEveryday = size == 0 || (size >= smallest && size < largest);
    char text[64];
    const auto result = isEveryday ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed)
                                   : std::to_chars(text, text + sizeof text, value);
    return result.ec == std::errc() ? std::string(text, result.ptr) : std::string();
}

}  // namespace

std::string shortestDecimal(float value) {
    return shortest(value);
}

std::string shortestDecimal(double value) {
    return shortest(value);
}

Ref<NSNumber> numberFrom(const Ref<NSObject>& value, bool* whole) {
    if (whole) *whole = true;
    if (auto number = std::dynamic_pointer_cast<NSNumber>(value)) return number;
    const auto* const string = dynamic_cast<const NSString*>(value.get());
    if (!string) return {};
    const std::string utf8 = string->utf8();
    std::string_view text = utf8;
    constexpr std::string_view kSpace = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    // from_chars accepts words such as "inf", which are not numbers here.
    const size_t firstDigit = text.find_first_not_of("-.");
    double number = 0;
    if (firstDigit == text.npos || !std::isdigit(static_cast<unsigned char>(text[firstDigit]))) return {};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return {};
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    if (whole) *whole = text.find_first_not_of(kSpace) == text.npos;
    return NSNumber::numberWithDouble(number);
}

Ref<NSNumber> NSNumber::numberWithBool(bool value) {
    return Ref<NSNumber>(new NSNumber(value));
}

Ref<NSNumber> NSNumber::numberWithInt(int32_t value) {
    return Ref<NSNumber>(new NSNumber(value));
}

Ref<NSNumber> NSNumber::numberWithLongLong(int64_t value) {
    return Ref<NSNumber>(new NSNumber(value));
}

Ref<NSNumber> NSNumber::numberWithFloat(float value) {
    return Ref<NSNumber>(new NSNumber(value));
}

Ref<NSNumber> NSNumber::numberWithDouble(double value) {
    return Ref<NSNumber>(new NSNumber(value));
}

bool NSNumber::isReal() const {
    return std::holds_alternative<float>(value_) || std::holds_alternative<double>(value_);
}

bool NSNumber::boolValue() const {
    return std::visit([](auto value) { return value != 0; }, value_);
}

int64_t NSNumber::longLongValue() const {
    return std::visit(
        [](auto value) {
            if constexpr (std::is_floating_point_v<decltype(value)>)
                return saturated<int64_t>(value);
            else
                return static_cast<int64_t>(value);
        },
        value_);
}

int32_t NSNumber::intValue() const {
    if (isReal()) return saturated<int32_t>(doubleValue());
    const int64_t wide = longLongValue();
    if (wide > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    if (wide < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(wide);
}

float NSNumber::floatValue() const {
    if (const float* value = std::get_if<float>(&value_)) return *value;
    const double wide = doubleValue();
    if (std::isfinite(wide)) {
        constexpr double largest = std::numeric_limits<float>::max();
        if (wide > largest) return std::numeric_limits<float>::max();
        if (wide < -largest) return std::numeric_limits<float>::lowest();
    }
    return static_cast<float>(wide);
}

double NSNumber::doubleValue() const {
    return std::visit([](auto value) { return static_cast<double>(value); }, value_);
}

bool NSNumber::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* number = dynamic_cast<const NSNumber*>(&other);
    if (!number) return false;
    // Compares two integers as integers, since a double does not hold every 64-bit integer.
    if (!isReal() && !number->isReal()) return longLongValue() == number->longLongValue();
    return doubleValue() == number->doubleValue();
}

size_t NSNumber::hash() const {
    return std::hash<double>()(doubleValue());
}

std::string NSNumber::description() const {
    return std::visit(
        [](auto value) {
            if constexpr (std::is_floating_point_v<decltype(value)>)
                return shortestDecimal(value);
            else
                return std::to_string(value);
        },
        value_);
}

}  // namespace qz
