#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "QzAnno/platform/foundation/NSCoding.h"
#include "QzAnno/platform/foundation/NSData.h"

namespace qz {

/// Where to store one decoded value: an integer in an integer that can hold it (a bool becomes true for anything but
/// 0), a real in a float or double, an object in a `Ref`, characters and raw bytes in a view that is valid as long as
/// the unarchiver lives.
using CodedSlot =
    std::variant<bool*, int32_t*, uint32_t*, int64_t*, uint64_t*, float*, double*, std::string_view*, Ref<NSObject>*>;

/// Reads objects and values from a typed stream of either byte order.
///
/// The data need not be trusted. Anything damaged, unknown or beyond the limits makes the unarchiver fail: every later
/// operation returns null, no value or false, and `error()` says what failed and where. Time and memory are bounded
/// (TypedStreamLimits.h).
class NSUnarchiver : public NSObject {
public:
    /// Reads the header, so the result may have failed already. Null counts as empty data, which is not a typed stream.
    /// The unarchiver keeps the data alive.
    static Ref<NSUnarchiver> initForReadingWithData(const Ref<NSData>& data);
    ~NSUnarchiver() override;

    /// Returns the first object of the stream. Returns null with one line in `error` if it cannot be read, and null
    /// without an error if the stream holds null there.
    static Ref<NSObject> unarchiveObjectWithData(const Ref<NSData>& data, std::string* error = nullptr);

    /// Reads one group "@". Returns null without a failure if the stream holds null or its class decodes the object as
    /// null.
    Ref<NSObject> decodeObject();
    /// As `decodeObject`; an object that is not of class `T` is a failure.
    template <class T>
    Ref<T> decodeObjectOfClass(std::string_view expectedClass) {
        const Ref<NSObject> object = decodeObject();
        Ref<T> typed = std::dynamic_pointer_cast<T>(object);
        if (object && !typed) failForClass(*object, expectedClass);
        return typed;
    }

    /// Reads one group; other types in the stream are a failure. Takes one slot for each leaf of the types, as the
    /// archiver does. After a failure the slots may or may not have been written.
    ///@{
    bool decodeValuesOfObjCTypes(std::string_view types, std::initializer_list<CodedSlot> slots);
    bool decodeValueOfObjCType(std::string_view type, CodedSlot slot) { return decodeValuesOfObjCTypes(type, {slot}); }
    ///@}
    /// Reads one group "[Nc]" of exactly `count` raw bytes; the type is 'c' or 'C'. The view is valid as long as the
    /// unarchiver lives.
    std::optional<std::string_view> decodeArrayOfObjCType(char type, size_t count);

    /// Reads one group of one value, which must have the type "c" for a bool, "i" or "I" for an integer, "f" or "d" for
    /// a real. Returns no value after a failure.
    ///@{
    std::optional<bool> decodeBool() { return decodeOne<bool>("c"); }
    std::optional<int32_t> decodeInt() { return decodeOne<int32_t>("i"); }
    std::optional<uint32_t> decodeUnsignedInt() { return decodeOne<uint32_t>("I"); }
    std::optional<float> decodeFloat() { return decodeOne<float>("f"); }
    std::optional<double> decodeDouble() { return decodeOne<double>("d"); }
    ///@}

    /// The types of the next group; no value at the end of the object or the data. Does not advance.
    std::optional<std::string_view> typesOfNextGroup();

    /// The version of that class in the stream; no value if no record of the class has been read so far.
    std::optional<int32_t> versionForClassName(std::string_view className) const;
    /// Whether all groups have been read; also true after a failure.
    bool isAtEnd();
    /// The system version in the header. Reading does not depend on it; `NSArchiver` writes 1000.
    uint32_t systemVersion() const;

    /// Makes the unarchiver fail with "byte 37: reason"; called by a decode function whose object is damaged.
    void fail(const std::string& reason);
    /// Stays true: nothing more is read after a failure.
    bool hasFailed() const;
    /// Empty until a failure.
    const std::string& error() const;

    // For the decode functions of collections.
    /// Announces `count` groups "@", which are then read by `decodeExpectedObject`. Fails if the remaining data cannot
    /// hold them in addition to what the enclosing collections expect; on success it is safe to reserve memory for
    /// them.
    bool expectObjects(uint64_t count);
    /// As `decodeObject`, for one of the groups announced by `expectObjects`; reading more than that is a bug.
    Ref<NSObject> decodeExpectedObject();
    /// Counts memory that decoding is about to take in addition to the objects themselves. Fails beyond the limit.
    bool countMemory(uint64_t bytes);
    /// Counts the cost of storing the last read object as a dictionary key or set member beside `entries` others. Fails
    /// beyond the limit.
    bool countKey(size_t entries);
    /// Counts items that a collection leaves out because they decode as null.
    void countDropped(uint64_t count) { dropped_ += count; }
    /// The value that a dictionary keeps for a repeated key: the later one, unless a subclass that renames keys decides
    /// otherwise.
    virtual Ref<NSObject> valueUnderRepeatedKey(const Ref<NSObject>& former, const Ref<NSObject>& later);

    /// An object of the host's that decode functions may ask for by its type, such as the `FontLibrary` that fonts are
    /// looked up in. Kept as long as the unarchiver; a later one of the same type replaces it.
    template <class T>
    void setContext(std::shared_ptr<T> context) {
        setContext(&kContextType<T>, std::move(context));
    }
    /// The context of that type; null if none was set.
    template <class T>
    std::shared_ptr<T> context() const {
        return std::static_pointer_cast<T>(contextOfType(&kContextType<T>));
    }

    /// How many items `countDropped` has counted.
    uint64_t droppedCount() const { return dropped_; }

    std::string className() const override { return "NSUnarchiver"; }

protected:
    /// As `initForReadingWithData`.
    explicit NSUnarchiver(const Ref<NSData>& data);

private:
    // Its address stands for the type.
    template <class T>
    static constexpr char kContextType = 0;

    void setContext(const void* type, std::shared_ptr<void> context);
    std::shared_ptr<void> contextOfType(const void* type) const;
    template <class T>
    std::optional<T> decodeOne(std::string_view type) {
        T value{};
        return decodeValueOfObjCType(type, &value) ? std::optional<T>(value) : std::nullopt;
    }
    void failForClass(const NSObject& object, std::string_view expectedClass);
    Ref<NSObject> readObject();
    Ref<NSObject> readReference(uint32_t number, size_t offset);
    Ref<NSObject> readNewObject(uint32_t number, uint32_t classNumber);
    Ref<NSObject> readContents(const CodedClass& codedClass, uint32_t number);
    void passOverGroups();
    void readLeaf(char code, uint32_t count, CodedSlot slot);

    struct State;
    const std::unique_ptr<State> state_;
    uint64_t dropped_ = 0;
};

}  // namespace qz
