#include "platform/foundation/TypedStreamReader.h"

#include <bit>
#include <cstdio>

#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/TypedStreamFormat.h"

namespace qz {

using namespace TypedStreamFormat;
using namespace TypedStreamLimits;

namespace {

// Memory of the tables, without the allocator's overhead.
constexpr uint64_t kStringMemory = 24;
constexpr uint64_t kTypesMemory = 64;
constexpr uint64_t kTypeNodeMemory = 16;
constexpr uint64_t kEntryMemory = 8;
constexpr uint64_t kClassMemory = 96;

std::string hexByte(uint8_t byte) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", unsigned{byte});
    return text;
}

}  // namespace

TypedStreamReader::TypedStreamReader(std::string_view bytes) : bytes_(bytes) {
    readHeader();
}

void TypedStreamReader::readHeader() {
    // Numbers of table entries have 32 bits, and no table has more entries than the stream has bytes.
    if (bytes_.size() >= UINT32_MAX) return fail("the stream is larger than 4 GB");
    const uint8_t version = readByte();
    const std::string_view signature = readRaw(readByte());
    if (signature != kLittleEndianSignature && signature != kBigEndianSignature) {
        error_.clear();
        if (bytes_.starts_with("bplist"))
            return failAt(0, "this is a binary property list, not a typed stream; property lists are read in XML");
        return failAt(0, "this is not a typed stream, which begins with 4, 11 and \"streamtyped\" or \"typedstream\"");
    }
    if (version != kStreamVersion) {
        return failAt(0, "the typed stream has version " + std::to_string(version) + "; only version 4 can be read");
    }
    isBigEndian_ = signature == kBigEndianSignature;
    systemVersion_ = static_cast<uint32_t>(readUnsigned('I'));
}

void TypedStreamReader::failAt(size_t offset, const std::string& reason) {
    if (error_.empty()) error_ = oneLine("byte " + std::to_string(offset) + ": " + reason);
}

bool TypedStreamReader::countMemory(uint64_t bytes) {
    const uint64_t max = kMemoryFree + kMemoryPerByteMax * bytes_.size();
    if (bytes <= max - memory_) {
        memory_ += bytes;
        return !hasFailed();
    }
    fail("the objects take more than " + std::to_string(max >> 20) + " MB of memory");
    return false;
}

bool TypedStreamReader::countSteps(uint64_t steps) {
    steps_ += steps;
    if (steps_ <= kStepsPerByteMax * bytes_.size()) return !hasFailed();
    fail("more values than a stream of " + std::to_string(bytes_.size()) + " bytes may have");
    return false;
}

uint8_t TypedStreamReader::nextByte() const {
    return hasFailed() || isAtEnd() ? uint8_t{0} : static_cast<uint8_t>(bytes_[offset_]);
}

uint8_t TypedStreamReader::readByte() {
    const std::string_view byte = readRaw(1);
    return byte.empty() ? uint8_t{0} : static_cast<uint8_t>(byte[0]);
}

std::string_view TypedStreamReader::readRaw(uint64_t count) {
    if (hasFailed()) return {};
    if (count > bytesLeft()) {
        fail(count == 1 ? "the data ends too soon"
                        : std::to_string(count) + " bytes are expected, but only " + std::to_string(bytesLeft()) +
                              " are left");
        return {};
    }
    const std::string_view raw = bytes_.substr(offset_, static_cast<size_t>(count));
    offset_ += raw.size();
    return raw;
}

uint64_t TypedStreamReader::readWord(size_t bytes) {
    const std::string_view raw = readRaw(bytes);
    uint64_t word = 0;
    for (size_t i = 0; i < raw.size(); ++i) {
        word = word << 8 | static_cast<uint8_t>(raw[isBigEndian_ ? i : raw.size() - 1 - i]);
    }
    return word;
}

int64_t TypedStreamReader::readSigned(char code) {
    const IntegerForm form = *integerFormOf(code);
    const size_t start = offset_;
    const uint8_t head = readByte();
    const auto headValue = std::bit_cast<int8_t>(head);
    if (isRawByte(code)) return headValue;
    int64_t value = headValue;
    if (head == kInteger16) {
        value = static_cast<int16_t>(readWord(2));
    } else if (head == kInteger32) {
        value = static_cast<int32_t>(readWord(4));
    } else if (head == kInteger64 && form.bits == 64) {
        value = static_cast<int64_t>(readWord(8));
    } else if (headValue < kLeastInHead) {
        failAt(start, hexByte(head) + " where an integer is expected");
    }
    if (value >= form.least() && value <= static_cast<int64_t>(form.greatest())) return hasFailed() ? 0 : value;
    failAt(start, std::to_string(value) + " is no value of the type \"" + code + "\"");
    return 0;
}

uint64_t TypedStreamReader::readUnsigned(char code) {
    const IntegerForm form = *integerFormOf(code);
    const size_t start = offset_;
    const uint8_t head = readByte();
    uint64_t value = head;
    if (isRawByte(code)) return value;
    if (head == kInteger16) {
        value = readWord(2);
    } else if (head == kInteger32) {
        value = readWord(4);
    } else if (head == kInteger64 && form.bits == 64) {
        value = readWord(8);
    } else if (std::bit_cast<int8_t>(head) < kLeastInHead) {
        failAt(start, hexByte(head) + " where an unsigned integer is expected");
    }
    if (value <= form.greatest()) return hasFailed() ? 0 : value;
    failAt(start, std::to_string(value) + " is no value of the type \"" + code + "\"");
    return 0;
}

double TypedStreamReader::readReal(char code) {
    if (nextByte() != kReal) return static_cast<double>(readSigned('i'));
    readByte();
    return code == 'f' ? double{std::bit_cast<float>(static_cast<uint32_t>(readWord(4)))}
                       : std::bit_cast<double>(readWord(8));
}

std::optional<std::string_view> TypedStreamReader::readBytes() {
    if (nextByte() == kNil) {
        readByte();
        return {};
    }
    return readRaw(readUnsigned('I'));
}

uint32_t TypedStreamReader::readReference(size_t tableSize, std::string_view table) {
    const size_t start = offset_;
    const int64_t number = readSigned('i') - kFirstReference;
    if (hasFailed()) return 0;
    if (number >= 0 && static_cast<uint64_t>(number) < tableSize) return static_cast<uint32_t>(number);
    failAt(start, "a reference to entry " + std::to_string(number) + " of the " + std::string(table) + ", which has " +
                      std::to_string(tableSize));
    return 0;
}

uint32_t TypedStreamReader::readSharedStringNumber() {
    if (nextByte() == kNil) {
        readByte();
        return kNone;
    }
    if (nextByte() != kNew) {
        const uint32_t number = readReference(strings_.size(), "shared strings");
        return hasFailed() ? kNone : number;
    }
    readByte();
    const std::string_view text = readRaw(readUnsigned('I'));
    if (hasFailed() || !countMemory(kStringMemory)) return kNone;
    strings_.push_back({text, nullptr});
    return static_cast<uint32_t>(strings_.size() - 1);
}

std::optional<std::string_view> TypedStreamReader::readSharedString() {
    const uint32_t number = readSharedStringNumber();
    return number == kNone ? std::nullopt : std::optional(strings_[number].text);
}

uint32_t TypedStreamReader::addEntry(EntryKind kind, uint32_t content) {
    if (countMemory(kEntryMemory)) entries_.push_back({kind, content});
    return static_cast<uint32_t>(entries_.size() - 1);
}

TypedStreamReader::Entry TypedStreamReader::readReferenceTo(EntryKind kind, std::string_view expected) {
    const size_t start = offset_;
    const uint32_t number = readReference(entries_.size(), "objects");
    if (hasFailed()) return {};
    if (entries_[number].kind == kind) return {Entry::reference, number, entries_[number].content};
    failAt(start, "entry " + std::to_string(number) + " of the objects is referred to as " + std::string(expected) +
                      ", which it is not");
    return {};
}

TypedStreamReader::Entry TypedStreamReader::readCString() {
    if (nextByte() == kNil) {
        readByte();
        return {};
    }
    if (nextByte() != kNew) return readReferenceTo(EntryKind::cString, "a C string");
    readByte();
    const uint32_t entry = addEntry(EntryKind::cString, 0);
    const uint32_t string = readSharedStringNumber();
    if (string == kNone) fail("a C string without characters");
    if (hasFailed()) return {};
    entries_[entry].content = string;
    return {Entry::made, entry, string};
}

// Reads the name and version of a class, after its tag.
uint32_t TypedStreamReader::readNewClass() {
    addEntry(EntryKind::class_, static_cast<uint32_t>(classes_.size()));
    const size_t start = offset_;
    const std::optional<std::string_view> name = readSharedString();
    if (!name || name->empty()) failAt(start, "a class without a name");
    const auto version = static_cast<int32_t>(readSigned('i'));
    if (hasFailed() || !countMemory(kClassMemory)) return kNone;
    const auto number = static_cast<uint32_t>(classes_.size());
    classes_.push_back({*name, version, kNone, 0});
    classNumbers_[*name] = number;
    return number;
}

TypedStreamReader::Entry TypedStreamReader::readClass() {
    const auto firstEntry = static_cast<uint32_t>(entries_.size());
    const auto firstClass = static_cast<uint32_t>(classes_.size());
    // A class is followed by its superclasses, up to nil or a class that is in the table.
    while (nextByte() == kNew && classes_.size() - firstClass <= kSuperclassesMax) {
        readByte();
        const uint32_t superclass = readNewClass();
        if (hasFailed()) return {};
        if (superclass != firstClass) classes_[superclass - 1].superclass = superclass;
    }
    const bool isNew = classes_.size() > firstClass;
    Entry last;
    if (nextByte() == kNew) {
        fail("a class with more than " + std::to_string(kSuperclassesMax) + " superclasses");
    } else if (nextByte() == kNil) {
        readByte();
    } else {
        const size_t start = offset_;
        last = readReferenceTo(EntryKind::class_, "a class");
        if (last.kind == Entry::reference && last.number >= firstEntry) {
            failAt(start, "a class that is its own superclass");
        }
    }
    if (hasFailed()) return {};
    if (!isNew) return last;
    if (last.kind == Entry::reference) classes_.back().superclass = last.content;
    countSuperclasses(firstClass);
    return {Entry::made, firstEntry, firstClass};
}

void TypedStreamReader::countSuperclasses(uint32_t firstClass) {
    for (size_t i = classes_.size(); i-- > firstClass;) {
        const uint32_t superclass = classes_[i].superclass;
        if (superclass != kNone) classes_[i].superclassCount = classes_[superclass].superclassCount + 1;
    }
    if (classes_[firstClass].superclassCount <= kSuperclassesMax) return;
    fail("a class with more than " + std::to_string(kSuperclassesMax) + " superclasses");
}

TypedStreamReader::Entry TypedStreamReader::readObject() {
    if (nextByte() == kNil) {
        readByte();
        return {};
    }
    if (nextByte() != kNew) return readReferenceTo(EntryKind::object, "an object");
    readByte();
    const uint32_t number = addEntry(EntryKind::object, kNone);
    const size_t start = offset_;
    const Entry objectClass = readClass();
    if (objectClass.kind == Entry::nil) failAt(start, "an object without a class");
    if (hasFailed()) return {};
    entries_[number].content = objectClass.content;
    return {Entry::made, number, objectClass.content};
}

const TypedStreamReader::ClassRecord* TypedStreamReader::classNamed(std::string_view name) const {
    const auto found = classNumbers_.find(name);
    return found == classNumbers_.end() ? nullptr : &classes_[found->second];
}

bool TypedStreamReader::isAtEndOfObject() const {
    return !group_.types && nextByte() == kEndOfObject;
}

bool TypedStreamReader::readEndOfObject() {
    if (!isAtEndOfObject()) fail("the end of an object is expected");
    if (hasFailed()) return false;
    ++offset_;
    return true;
}

TypedStreamReader::Group TypedStreamReader::nextGroup() {
    if (group_.types || hasFailed() || isAtEnd() || isAtEndOfObject()) return group_;
    const size_t start = offset_;
    const uint32_t number = readSharedStringNumber();
    if (hasFailed()) return {};
    if (number == kNone) {
        failAt(start, "nil where the types of a value are expected");
        return {};
    }
    SharedString& string = strings_[number];
    if (!string.types) {
        std::string error;
        std::optional<EncodedTypes> types = EncodedTypes::parse(string.text, &error);
        if (!types) {
            failAt(start, error);
            return {};
        }
        if (!countMemory(kTypesMemory + kTypeNodeMemory * types->nodeCount())) return {};
        string.types = std::make_unique<const EncodedTypes>(std::move(*types));
    }
    group_ = {string.text, string.types.get(), start};
    return group_;
}

TypedStreamReader::Group TypedStreamReader::beginGroup() {
    const Group group = nextGroup();
    group_ = {};
    if (!group.types) {
        fail(isAtEnd() ? "the data ends where a value is expected" : "an object ends where a value is expected");
    } else if (group.types->leastBytes() > bytesLeft()) {
        fail("values of the types " + quotedExcerpt(group.text) + " take at least " +
             std::to_string(group.types->leastBytes()) + " bytes, and " + std::to_string(bytesLeft()) + " are left");
    }
    return hasFailed() ? Group{} : group;
}

}  // namespace qz
