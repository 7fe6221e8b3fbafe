#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qz {

struct CodedClass;

/// Writes the elements of a little-endian typed stream one after another and keeps its tables. The caller keeps the
/// numbers of its objects.
class TypedStreamWriter {
public:
    /// Writes the header.
    TypedStreamWriter();

    const std::vector<uint8_t>& bytes() const { return bytes_; }

    // Values. Integers take their shortest form; those of c, C and B go through `writeByte`.
    void writeByte(uint8_t byte) { bytes_.push_back(byte); }
    void writeSigned(int64_t value);
    void writeUnsigned(uint64_t value);
    /// `code` is f or d.
    void writeReal(double value, char code);
    void writeRaw(std::string_view raw);
    /// Writes the length and then the raw bytes.
    void writeBytes(std::string_view raw);
    void writeSharedString(std::string_view text);
    void writeCString(std::string_view text);
    /// Writes a class with its superclasses. Returns false if a superclass is not registered.
    bool writeClass(const CodedClass& codedClass);
    void writeNil();

    /// Begins an object and returns its number; its class and groups follow, then its end.
    uint32_t beginObject();
    void endObject();
    void writeReference(uint32_t number);

private:
    void writeWord(uint64_t word, size_t bytes);

    std::vector<uint8_t> bytes_;
    std::unordered_map<std::string, uint32_t> strings_;
    // Entries of a single table: objects, classes by name, C strings by their characters.
    uint32_t entryCount_ = 0;
    std::unordered_map<std::string, uint32_t> classes_;
    std::unordered_map<std::string, uint32_t> cStrings_;
};

}  // namespace qz
