#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/foundation/TypedStreamTypes.h"

namespace qz {

/// Reads the elements of a typed stream one after another and keeps its tables, making no objects. The bytes must
/// outlive it, and so must those who keep the views that it hands out.
///
/// After a failure every read yields nothing, so a caller that reads several elements may check once.
class TypedStreamReader {
public:
    /// Reads the header.
    explicit TypedStreamReader(std::string_view bytes);

    bool isBigEndian() const { return isBigEndian_; }
    uint32_t systemVersion() const { return systemVersion_; }
    size_t offset() const { return offset_; }
    size_t bytesLeft() const { return bytes_.size() - offset_; }
    bool isAtEnd() const { return bytesLeft() == 0; }

    /// The first failure stands: "byte 37: reason", on one line.
    void fail(const std::string& reason) { failAt(offset_, reason); }
    void failAt(size_t offset, const std::string& reason);
    bool hasFailed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }

    /// Counts memory that is about to be taken, here or by whoever makes objects. False (a failure) past the limit.
    bool countMemory(uint64_t bytes);
    /// Counts types gone through. False (a failure) past the limit.
    bool countSteps(uint64_t steps);

    struct Group {
        std::string_view text;
        const EncodedTypes* types = nullptr;  ///< null where there is no group
        size_t offset = 0;                    ///< of the type string
    };
    /// The group that begins here; none at the end of the object or the data. Reading goes on with its types' values
    /// only after `beginGroup`.
    Group nextGroup();
    /// The same, as a step: a failure where there is none, or where the data that is left cannot hold the values.
    Group beginGroup();
    bool isAtEndOfObject() const;
    bool readEndOfObject();

    // Values. The code says which integer or real it is.
    int64_t readSigned(char code);
    uint64_t readUnsigned(char code);
    double readReal(char code);
    /// Raw bytes of a known length, as those of an array.
    std::string_view readRaw(uint64_t count);
    /// Raw bytes behind their length; none for nil.
    std::optional<std::string_view> readBytes();
    /// None for nil.
    std::optional<std::string_view> readSharedString();

    /// What stands at a place of an entry of the table of objects, classes and C strings.
    struct Entry {
        enum Kind : uint8_t { nil, made, reference };
        Kind kind = nil;
        uint32_t number = 0;
        uint32_t content =
            0;  ///< of a class and an object: the number of the class; of a C string: that of the shared string
    };
    Entry readCString();
    Entry readClass();
    /// Of an object that is made only the head; its groups follow, then its end.
    Entry readObject();

    std::string_view sharedString(uint32_t number) const { return strings_[number].text; }
    struct ClassRecord {
        std::string_view name;
        int32_t version = 0;
        uint32_t superclass = kNone;
        uint32_t superclassCount = 0;
    };
    static constexpr uint32_t kNone = UINT32_MAX;
    const ClassRecord& classRecord(uint32_t number) const { return classes_[number]; }
    /// The latest record of that name; null when there is none.
    const ClassRecord* classNamed(std::string_view name) const;

private:
    enum class EntryKind : uint8_t { object, class_, cString };
    struct TableEntry {
        EntryKind kind;
        uint32_t content;
    };
    struct SharedString {
        std::string_view text;
        std::unique_ptr<const EncodedTypes> types;
    };

    void readHeader();
    uint8_t nextByte() const;
    uint8_t readByte();
    uint64_t readWord(size_t bytes);
    uint32_t readReference(size_t tableSize, std::string_view table);
    Entry readReferenceTo(EntryKind kind, std::string_view expected);
    uint32_t addEntry(EntryKind kind, uint32_t content);
    /// The number of the string; none for nil.
    uint32_t readSharedStringNumber();
    uint32_t readNewClass();
    void countSuperclasses(uint32_t firstClass);

    const std::string_view bytes_;
    size_t offset_ = 0;
    bool isBigEndian_ = false;
    uint32_t systemVersion_ = 0;
    std::string error_;
    uint64_t memory_ = 0;
    uint64_t steps_ = 0;
    Group group_;
    // Deques, since growing must neither move what is referred to nor take twice the memory.
    std::deque<SharedString> strings_;
    std::deque<TableEntry> entries_;
    std::deque<ClassRecord> classes_;
    std::unordered_map<std::string_view, uint32_t> classNumbers_;
};

}  // namespace qz
