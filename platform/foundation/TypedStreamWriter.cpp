#include "platform/foundation/TypedStreamWriter.h"

#include <bit>
#include <cmath>

#include "QzAnno/platform/foundation/NSCoding.h"
#include "platform/foundation/TypedStreamFormat.h"

namespace qz {

using namespace TypedStreamFormat;

TypedStreamWriter::TypedStreamWriter() {
    writeByte(kStreamVersion);
    writeBytes(kLittleEndianSignature);
    writeUnsigned(kSystemVersion);
}

void TypedStreamWriter::writeWord(uint64_t word, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) writeByte(static_cast<uint8_t>(word >> (8 * i)));
}

void TypedStreamWriter::writeSigned(int64_t value) {
    if (value >= kLeastInHead && value <= kGreatestInHead) {
        writeByte(static_cast<uint8_t>(value));
    } else if (value == static_cast<int16_t>(value)) {
        writeByte(kInteger16);
        writeWord(static_cast<uint64_t>(value), 2);
    } else if (value == static_cast<int32_t>(value)) {
        writeByte(kInteger32);
        writeWord(static_cast<uint64_t>(value), 4);
    } else {
        writeByte(kInteger64);
        writeWord(static_cast<uint64_t>(value), 8);
    }
}

void TypedStreamWriter::writeUnsigned(uint64_t value) {
    // From 128 on, a value byte could be mistaken for a tag.
    if (value <= static_cast<uint64_t>(kGreatestInHead)) {
        writeByte(static_cast<uint8_t>(value));
    } else if (value <= UINT16_MAX) {
        writeByte(kInteger16);
        writeWord(value, 2);
    } else if (value <= UINT32_MAX) {
        writeByte(kInteger32);
        writeWord(value, 4);
    } else {
        writeByte(kInteger64);
        writeWord(value, 8);
    }
}

void TypedStreamWriter::writeReal(double value, char code) {
    // As an integer, negative zero would lose its sign. NaN never passes the range check.
    const bool isNegativeZero = value == 0 && std::signbit(value);
    if (value >= INT32_MIN && value <= INT32_MAX && value == std::trunc(value) && !isNegativeZero) {
        writeSigned(static_cast<int64_t>(value));
        return;
    }
    writeByte(kReal);
    if (code == 'f')
        writeWord(std::bit_cast<uint32_t>(static_cast<float>(value)), 4);
    else
        writeWord(std::bit_cast<uint64_t>(value), 8);
}

void TypedStreamWriter::writeRaw(std::string_view raw) {
    bytes_.insert(bytes_.end(), raw.begin(), raw.end());
}

void TypedStreamWriter::writeBytes(std::string_view raw) {
    writeUnsigned(raw.size());
    writeRaw(raw);
}

void TypedStreamWriter::writeSharedString(std::string_view text) {
    const auto [known, isNew] = strings_.emplace(text, static_cast<uint32_t>(strings_.size()));
    if (!isNew) return writeReference(known->second);
    writeByte(kNew);
    writeBytes(text);
}

void TypedStreamWriter::writeCString(std::string_view text) {
    const auto [known, isNew] = cStrings_.emplace(text, entryCount_);
    if (!isNew) return writeReference(known->second);
    ++entryCount_;
    writeByte(kNew);
    writeSharedString(text);
}

bool TypedStreamWriter::writeClass(const CodedClass& codedClass) {
    for (const CodedClass* current = &codedClass;;) {
        const auto [known, isNew] = classes_.emplace(current->name, entryCount_);
        if (!isNew) {
            writeReference(known->second);
            return true;
        }
        ++entryCount_;
        writeByte(kNew);
        writeSharedString(current->name);
        writeSigned(current->version);
        if (current->superclassName.empty()) break;
        current = codedClassNamed(current->superclassName);
        if (!current) return false;
    }
    writeNil();
    return true;
}

void TypedStreamWriter::writeNil() {
    writeByte(kNil);
}

uint32_t TypedStreamWriter::beginObject() {
    writeByte(kNew);
    return entryCount_++;
}

void TypedStreamWriter::endObject() {
    writeByte(kEndOfObject);
}

void TypedStreamWriter::writeReference(uint32_t number) {
    writeSigned(int64_t{number} + kFirstReference);
}

}  // namespace qz
