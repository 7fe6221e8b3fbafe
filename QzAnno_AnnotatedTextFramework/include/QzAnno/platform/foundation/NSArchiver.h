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

/// One value to write: an integer for the type codes c C B s S i I l L q Q, a real for f d, an object for @, characters
/// for + % : * and for arrays of c or C, a class name for #.
class CodedValue {
public:
    /// Implicit, so that values can be passed directly. A bool becomes the integer 0 or 1; an object may be null.
    /// Characters are not copied: the caller keeps them until they are written. They must not be a null pointer.
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

    /// A variant of `int64_t` (narrower integers are widened to it), `uint64_t`, `double`, `std::string_view` and
    /// `Ref<NSObject>`.
    const auto& value() const { return value_; }

private:
    std::variant<int64_t, uint64_t, double, std::string_view, Ref<NSObject>> value_;
};

/// Writes objects and values as a typed stream, little-endian, into a growing buffer.
///
/// An object encountered again (the same object, not an equal one) is written as a reference. Anything that cannot be
/// written (an object whose class has no coded form, nesting that is too deep) makes the whole archive fail: further
/// operations do nothing, and there is no data. The limits are those of the reader, so whatever is written can be read.
class NSArchiver : public NSObject {
public:
    /// Starts a stream with its header only.
    static Ref<NSArchiver> init();
    ~NSArchiver() override;

    /// Returns null if the object cannot be archived, with one line in `error` that says what failed and where in the
    /// object.
    static Ref<NSData> archivedDataWithRootObject(const Ref<NSObject>& rootObject, std::string* error = nullptr);

    /// Writes one group "@"; a null object is written as null. Like all encode functions, returns false after a
    /// failure.
    ///@{
    bool encodeRootObject(const Ref<NSObject>& rootObject) { return encodeObject(rootObject); }
    bool encodeObject(const Ref<NSObject>& object);
    ///@}

    /// Writes one group, with one value for each leaf of the types, in order: "{_NSPoint=ff}" takes two reals, "[3i]"
    /// three integers, "[5c]" the characters as one value. An integer outside the range of its type makes the archive
    /// fail. Passing values whose number or kinds differ from the types is a bug in the caller.
    ///@{
    bool encodeValuesOfObjCTypes(std::string_view types, std::initializer_list<CodedValue> values);
    bool encodeValueOfObjCType(std::string_view type, CodedValue value) {
        return encodeValuesOfObjCTypes(type, {std::move(value)});
    }
    ///@}
    /// Writes one group "[Nc]" of raw bytes; the type is 'c' or 'C'.
    bool encodeArrayOfObjCType(char type, std::span<const uint8_t> bytes);

    /// Writes one group of one value: type "c" for a bool, "i" or "I" for an integer, "f" or "d" for a real, "[Nc]" for
    /// bytes.
    ///@{
    bool encodeBool(bool value) { return encodeValueOfObjCType("c", value); }
    bool encodeInt(int32_t value) { return encodeValueOfObjCType("i", value); }
    bool encodeUnsignedInt(uint32_t value) { return encodeValueOfObjCType("I", value); }
    bool encodeFloat(float value) { return encodeValueOfObjCType("f", double{value}); }
    bool encodeDouble(double value) { return encodeValueOfObjCType("d", value); }
    bool encodeChars(std::span<const uint8_t> bytes) { return encodeArrayOfObjCType('c', bytes); }
    ///@}

    /// Makes the archive fail; called by an encode function that cannot write its object. The reason ends the error
    /// line: "NSArray > object 2 > QzFoo: reason".
    void fail(std::string reason);
    /// Stays true: a failed archive cannot be repaired.
    bool hasFailed() const { return !error_.empty(); }
    /// Empty until a failure.
    const std::string& error() const { return error_; }
    /// Names the place inside an object where writing a part failed (an index, a key). Called from the innermost place
    /// outward.
    void addPlaceOfFailure(std::string_view place);
    /// Counts the reader's cost of storing the last written object as a dictionary key or set member beside `entries`
    /// others, so that nothing is written that a reader would refuse.
    bool countKey(size_t entries);

    /// Returns a copy of what has been written so far, or null after a failure.
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
