#pragma once

#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "QzAnno/platform/foundation/NSCoding.h"
#include "QzAnno/platform/foundation/NSData.h"

namespace qz {

class TypedStreamWriter;

/// One value to be written: an integer for the codes c C B s S i I l L q Q, a real for f d, an object for @, characters
/// for + % : * and for arrays of c or C, a class name for #.
class CodedValue {
public:
    /// Implicit, so that values are written as they are. A truth value is the integer 0 or 1, and an object may be
    /// none. Characters are not copied and stay with the caller until they are written; a null pointer is not allowed.
    ///@{
    CodedValue(bool value) : value_(int64_t{value}) {}
    CodedValue(int32_t value) : value_(int64_t{value}) {}
    CodedValue(int64_t value) : value_(value) {}
    CodedValue(uint32_t value) : value_(int64_t{value}) {}
    CodedValue(uint64_t value) : value_(value) {}
    CodedValue(double value) : value_(value) {}
    CodedValue(std::string_view characters) : value_(characters) {}
    CodedValue(const char* characters) : value_(std::string_view(characters)) {}
    template <class T>
    CodedValue(const Ref<T>& object) : value_(Ref<NSObject>(object)) {}
    ///@}

    /// A variant of `int64_t`, which narrower integers become, `uint64_t`, `double`, `std::string_view` and
    /// `Ref<NSObject>`.
    const auto& value() const { return value_; }

private:
    std::variant<int64_t, uint64_t, double, std::string_view, Ref<NSObject>> value_;
};

/// Writes objects and values as a typed stream, little-endian, into a growing buffer.
///
/// An object that is met again (the same object, not an equal one) is written as a reference. What cannot be written
/// (an object of a class without coded form, too deep a nesting) makes the whole archive fail: operations then do
/// nothing, and there is no data. Limits are those of reading, so whatever is written can be read.
class NSArchiver : public NSObject {
public:
    /// With the header of a stream and nothing behind it.
    static Ref<NSArchiver> init();
    ~NSArchiver() override;

    /// None, with one line in `error` that says what failed and where in the object it stands.
    static Ref<NSData> archivedDataWithRootObject(const Ref<NSObject>& rootObject, std::string* error = nullptr);

    /// Writes one group "@"; none is written as such. False after a failure, as for all that follow.
    ///@{
    bool encodeRootObject(const Ref<NSObject>& rootObject) { return encodeObject(rootObject); }
    bool encodeObject(const Ref<NSObject>& object);
    ///@}

    /// Writes one group. The values are those of the types' leaves in order: "{_NSPoint=ff}" takes two reals, "[3i]"
    /// three integers, "[5c]" the characters as one value. An integer outside its type makes the archive fail. Another
    /// number or kind of values than the types ask for is a bug of the caller.
    ///@{
    bool encodeValuesOfObjCTypes(std::string_view types, std::initializer_list<CodedValue> values);
    bool encodeValueOfObjCType(std::string_view type, CodedValue value) {
        return encodeValuesOfObjCTypes(type, {std::move(value)});
    }
    ///@}
    /// Writes one group "[Nc]" of raw bytes; the type is 'c' or 'C'.
    bool encodeArrayOfObjCType(char type, std::span<const uint8_t> bytes);

    /// Writes one group of one value: of the type "c" for a truth value, "i" or "I" for an integer, "f" or "d" for a
    /// real, "[Nc]" for bytes.
    ///@{
    bool encodeBool(bool value) { return encodeValueOfObjCType("c", value); }
    bool encodeInt(int32_t value) { return encodeValueOfObjCType("i", value); }
    bool encodeUnsignedInt(uint32_t value) { return encodeValueOfObjCType("I", value); }
    bool encodeFloat(float value) { return encodeValueOfObjCType("f", double{value}); }
    bool encodeDouble(double value) { return encodeValueOfObjCType("d", value); }
    bool encodeChars(std::span<const uint8_t> bytes) { return encodeArrayOfObjCType('c', bytes); }
    ///@}

    /// Makes the archive fail, for an encode function that cannot write its object. The reason becomes part of one
    /// line: "NSArray > object 2 > QzFoo: reason".
    void fail(std::string reason);
    /// Stays true: a failed archive cannot be mended.
    bool hasFailed() const { return !error_.empty(); }
    /// Empty until a failure.
    const std::string& error() const { return error_; }
    /// Names, innermost first, the place inside an object at which writing a part has failed (an index, a key).
    void addPlaceOfFailure(std::string_view place);
    /// Counts what it costs a reader to file the object written last as a dictionary's key or a set's member, `entries`
    /// being filed already, so that nothing is written that a reader would refuse.
    bool countKey(size_t entries);

    /// What has been written by now; none after a failure. A copy.
    Ref<NSData> archiverData() const;

    std::string className() const override { return "NSArchiver"; }

protected:
    NSArchiver();

private:
    void writeValue(const CodedValue& value, char code, uint32_t count);
    void writeObject(const Ref<NSObject>& object);
    void writeNewObject(const Ref<NSObject>& object);

    struct State;
    const std::unique_ptr<State> state_;
    std::string error_;
};

}  // namespace qz
