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

/// Where one value that is read goes: integers to an integer that must hold them (a bool takes whatever is not 0 as
/// true), reals to a float or double, objects to a `Ref`, characters and raw bytes to a view that lives as long as the
/// unarchiver.
using CodedSlot =
    std::variant<bool*, int32_t*, uint32_t*, int64_t*, uint64_t*, float*, double*, std::string_view*, Ref<NSObject>*>;

/// Reads objects and values from a typed stream of either byte order.
///
/// The data may come from anywhere. What is damaged, unknown or beyond the limits makes the unarchiver fail: every
/// operation from then on yields none or false and `error()` says what and where. Work and memory are bounded
/// (TypedStreamLimits.h).
class NSUnarchiver : public NSObject {
public:
    /// Reads the header, so it may have failed already. No data counts as empty data, which is no typed stream. The
    /// data are kept as long as the unarchiver lives.
    static Ref<NSUnarchiver> initForReadingWithData(const Ref<NSData>& data);
    ~NSUnarchiver() override;

    /// The first object of the stream. None, with one line in `error`, when it cannot be read; none without an error
    /// when the stream holds no object there.
    static Ref<NSObject> unarchiveObjectWithData(const Ref<NSData>& data, std::string* error = nullptr);

    /// Reads one group "@". None without a failure where the stream has no object or the object decodes as none.
    Ref<NSObject> decodeObject();
    /// The object when it is of class `T`. Another class is a failure.
    template <class T>
    Ref<T> decodeObjectOfClass(std::string_view expectedClass) {
        const Ref<NSObject> object = decodeObject();
        Ref<T> typed = std::dynamic_pointer_cast<T>(object);
        if (object && !typed) failForClass(*object, expectedClass);
        return typed;
    }

    /// Reads one group, whose types must be these, or it is a failure. There is one slot for each leaf of the types, as
    /// for the archiver. After a failure slots may be written or not.
    ///@{
    bool decodeValuesOfObjCTypes(std::string_view types, std::initializer_list<CodedSlot> slots);
    bool decodeValueOfObjCType(std::string_view type, CodedSlot slot) { return decodeValuesOfObjCTypes(type, {slot}); }
    ///@}
    /// Reads one group "[Nc]" of exactly `count` raw bytes; the type is 'c' or 'C'. The view lives as long as the
    /// unarchiver.
    std::optional<std::string_view> decodeArrayOfObjCType(char type, size_t count);

    /// Reads one group of one value, which must be of the type "c" for a truth value, "i" or "I" for an integer, "f" or
    /// "d" for a real. None is a failure.
    ///@{
    std::optional<bool> decodeBool() { return decodeOne<bool>("c"); }
    std::optional<int32_t> decodeInt() { return decodeOne<int32_t>("i"); }
    std::optional<uint32_t> decodeUnsignedInt() { return decodeOne<uint32_t>("I"); }
    std::optional<float> decodeFloat() { return decodeOne<float>("f"); }
    std::optional<double> decodeDouble() { return decodeOne<double>("d"); }
    ///@}

    /// The types of the group that comes next; none at the end of the object or the data. Reads nothing.
    std::optional<std::string_view> typesOfNextGroup();

    /// The version in the class record of that name among those read by now; none when there is no such record.
    std::optional<int32_t> versionForClassName(std::string_view className) const;
    /// Whether all groups of the data are read; also true after a failure.
    bool isAtEnd();
    /// The system version in the header, which reading does not depend on; `NSArchiver` writes 1000.
    uint32_t systemVersion() const;

    /// Makes the unarchiver fail, for a decode function whose object is damaged: "byte 37: reason".
    void fail(const std::string& reason);
    /// Stays true: nothing more is read after a failure.
    bool hasFailed() const;
    /// Empty until a failure.
    const std::string& error() const;

    // For decode functions of collections.
    /// Says that so many groups "@" follow. Refused (a failure) when the data that is left cannot hold them beside what
    /// the collections around this one expect; else memory for them may be reserved. They are then read by
    /// `decodeExpectedObject`.
    bool expectObjects(uint64_t count);
    /// As `decodeObject`, for one of the groups that `expectObjects` has announced; asking for more is a bug.
    Ref<NSObject> decodeExpectedObject();
    /// Counts memory that decoding is about to take beyond that of the objects themselves. False (a failure) past the
    /// limit.
    bool countMemory(uint64_t bytes);
    /// Counts what it may cost to file the object read last as a dictionary's key or a set's member, `entries` being
    /// filed already. False (a failure) past the limit.
    bool countKey(size_t entries);
    /// Counts what a collection leaves out since it decodes as no object.
    void countDropped(uint64_t count) { dropped_ += count; }
    /// What a dictionary files under a key that it has already: the later value, unless a reader of keys that it
    /// changes knows better.
    virtual Ref<NSObject> valueUnderRepeatedKey(const Ref<NSObject>& former, const Ref<NSObject>& later);

    /// How many entries, elements and members the collections that were read have lost that way.
    uint64_t droppedCount() const { return dropped_; }

    std::string className() const override { return "NSUnarchiver"; }

protected:
    /// As `initForReadingWithData`.
    explicit NSUnarchiver(const Ref<NSData>& data);

private:
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
