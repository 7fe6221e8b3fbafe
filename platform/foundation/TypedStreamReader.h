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

/// Reads the elements of a typed stream one after another and keeps its tables, without making objects. The bytes must
/// outlive the reader and the views that it returns.
///
/// After a failure every read returns nothing, so a caller may read several elements and check once.
class TypedStreamReader {
public:
    /// Reads the header.
    explicit TypedStreamReader(std::string_view bytes);

    bool isBigEndian() const { return isBigEndian_; }
    uint32_t systemVersion() const { return systemVersion_; }
    size_t offset() const { return offset_; }
    size_t bytesLeft() const { return bytes_.size() - offset_; }
    bool isAtEnd() const { return bytesLeft() == 0; }

    /// Keeps the first failure only: "byte 37: reason", on one line.
    void fail(const std::string& reason) { failAt(offset_, reason); }
    void failAt(size_t offset, const std::string& reason);
    bool hasFailed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }

    /// Counts memory that is about to be taken, here or by the maker of the objects. Fails beyond the limit.
    bool countMemory(uint64_t bytes);
    /// Counts types visited. Fails beyond the limit.
    bool countSteps(uint64_t steps);

    struct Group {
        std::string_view text;
        const EncodedTypes* types = nullptr;  ///< null if there is no group
        size_t offset = 0;                    ///< of the type string
    };
    /// The group that begins here, without types at the end of the object or the data. Call `beginGroup` before reading
    /// its values.
    Group nextGroup();
    /// Advances to the values of the group that begins here. Fails if there is no group or if the remaining data cannot
    /// hold its values.
    Group beginGroup();
    bool isAtEndOfObject() const;
    bool readEndOfObject();

    // Values. The code gives the type of the integer or real.
    int64_t readSigned(char code);
    uint64_t readUnsigned(char code);
    double readReal(char code);
    /// Reads raw bytes of a known length, such as those of an array.
    std::string_view readRaw(uint64_t count);
    /// Reads a length and that many raw bytes; no value for nil.
    std::optional<std::string_view> readBytes();
    /// No value for nil.
    std::optional<std::string_view> readSharedString();

    /// What the stream has in place of an object, class or C string: nil, a new entry of the table, or a reference to
    /// one.
    struct Entry {
        enum Kind : uint8_t { nil, made, reference };
        Kind kind = nil;
        uint32_t number = 0;
        uint32_t content =
            0;  ///< of a class and an object: the number of the class; of a C string: that of the shared string
    };
    Entry readCString();
    Entry readClass();
    /// Reads only the head of a new object; its groups follow, then its end.
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
    /// The latest record of that name, or null.
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
    /// The number of the string, or `kNone` for nil.
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
    // Deques, since growing must neither move entries that are referred to nor take twice the memory.
    std::deque<SharedString> strings_;
    std::deque<TableEntry> entries_;
    std::deque<ClassRecord> classes_;
    std::unordered_map<std::string_view, uint32_t> classNumbers_;
};

}  // namespace qz
