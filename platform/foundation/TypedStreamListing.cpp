#include "platform/foundation/TypedStreamListing.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/TypedStreamReader.h"

namespace qz {
namespace {

using Entry = TypedStreamReader::Entry;

// Shows raw bytes up to this length; a bit set has thousands.
constexpr size_t kShownBytesMax = 256;
// Deeper lines are not indented further, or the text would grow with the square of the depth.
constexpr size_t kIndentedLevelsMax = 32;

constexpr size_t kPlainNameMax = 64;

std::string escaped(std::string_view text) {
    std::string shown = "\"";
    for (const char c : text.substr(0, kShownBytesMax)) {
        const auto byte = static_cast<uint8_t>(c);
        if (byte < 0x20 || byte == 0x7F) {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02x", unsigned{byte});
            shown += code;
        } else {
            if (c == '"' || c == '\\') shown += '\\';
            shown += c;
        }
    }
    shown += '"';
    if (text.size() > kShownBytesMax) shown += " and so on, " + std::to_string(text.size()) + " bytes";
    return shown;
}

std::string hexadecimal(std::string_view raw) {
    std::string shown;
    for (const char c : raw.substr(0, kShownBytesMax / 4)) {
        char code[8];
        std::snprintf(code, sizeof code, "%s%02x", shown.empty() ? "" : " ", unsigned{static_cast<uint8_t>(c)});
        shown += code;
    }
    if (raw.size() > kShownBytesMax / 4) shown += " and so on, " + std::to_string(raw.size()) + " bytes";
    return shown;
}

bool isPrintable(std::string_view raw) {
    return std::ranges::all_of(raw, [](char c) { return c >= ' ' && c <= '~'; });
}

class Lister {
public:
    Lister(const NSData& data, const std::function<void(std::string_view)>& line) : reader_(data.view()), line_(line) {}

    bool list();
    const std::string& error() const { return reader_.error(); }

private:
    void putLine(size_t offset, std::string_view content);
    void listGroups();
    void listGroup(const TypedStreamReader::Group& group);
    void listLeaf(TypeLeaves::Leaf leaf, size_t offset);
    void listObject(size_t offset);
    std::string scalar(TypeLeaves::Leaf leaf);
    std::string characters(std::optional<std::string_view> text) { return text ? escaped(*text) : "nil"; }
    std::string entry(Entry entry, const std::string& content);
    /// The class with its superclasses, up to the first whose superclasses have been shown.
    std::string classChain(uint32_t number);
    std::string className(uint32_t number) const;

    TypedStreamReader reader_;
    const std::function<void(std::string_view)>& line_;
    size_t level_ = 0;
    size_t openObjects_ = 0;
    std::vector<bool> shownClasses_;
};

void Lister::putLine(size_t offset, std::string_view content) {
    // After a failure the values read are not what the stream says.
    if (reader_.hasFailed()) return;
    char place[24];
    std::snprintf(place, sizeof place, "%06zx  ", offset);
    line_(place + std::string(2 * std::min(level_, kIndentedLevelsMax), ' ') + std::string(content));
}

std::string Lister::classChain(uint32_t number) {
    shownClasses_.resize(std::max<size_t>(shownClasses_.size(), number + 1));
    std::string chain = className(number);
    for (uint32_t k = number; !shownClasses_[k];) {
        shownClasses_[k] = true;
        k = reader_.classRecord(k).superclass;
        if (k == TypedStreamReader::kNone) break;
        shownClasses_.resize(std::max<size_t>(shownClasses_.size(), k + 1));
        chain += " : " + className(k);
    }
    return chain;
}

std::string Lister::className(uint32_t number) const {
    const TypedStreamReader::ClassRecord& record = reader_.classRecord(number);
    const bool isPlain = isPrintable(record.name) && record.name.size() <= kPlainNameMax;
    return (isPlain ? std::string(record.name) : quotedExcerpt(record.name)) + " v" + std::to_string(record.version);
}

std::string Lister::entry(Entry entry, const std::string& content) {
    if (entry.kind == Entry::nil) return "nil";
    const std::string number = "#" + std::to_string(entry.number);
    return entry.kind == Entry::reference ? "-> " + number + " " + content : number + " " + content;
}

std::string Lister::scalar(TypeLeaves::Leaf leaf) {
    const char code = leaf.code;
    if (const std::optional<IntegerForm> form = integerFormOf(code)) {
        return form->isSigned ? std::to_string(reader_.readSigned(code)) : std::to_string(reader_.readUnsigned(code));
    }
    switch (code) {
        case 'f':
            return shortestDecimal(static_cast<float>(reader_.readReal(code)));
        case 'd':
            return shortestDecimal(reader_.readReal(code));
        case '[': {
            const std::string_view raw = reader_.readRaw(leaf.count);
            return isPrintable(raw) ? escaped(raw) : hexadecimal(raw);
        }
        case '+':
            return characters(reader_.readBytes());
        case '*': {
            const Entry string = reader_.readCString();
            return entry(string, string.kind == Entry::nil ? "" : escaped(reader_.sharedString(string.content)));
        }
        case '#': {
            const Entry cls = reader_.readClass();
            return entry(cls, cls.kind == Entry::nil ? "" : classChain(cls.content));
        }
        default:
            return characters(reader_.readSharedString());
    }
}

void Lister::listLeaf(TypeLeaves::Leaf leaf, size_t offset) {
    if (leaf.code == '@') return listObject(offset);
    const std::string code = leaf.code == '[' ? "[" + std::to_string(leaf.count) + "]" : std::string(1, leaf.code);
    putLine(offset, code + "  " + scalar(leaf));
}

void Lister::listObject(size_t offset) {
    const Entry object = reader_.readObject();
    if (reader_.hasFailed()) return;
    putLine(offset, "@  " + entry(object, object.kind == Entry::nil ? "" : classChain(object.content)));
    if (object.kind != Entry::made) return;
    if (openObjects_ == TypedStreamLimits::kNestingMax) {
        return reader_.fail("more than " + std::to_string(TypedStreamLimits::kNestingMax) +
                            " objects inside each other");
    }
    ++openObjects_;
    ++level_;
    listGroups();
    --level_;
    --openObjects_;
    reader_.readEndOfObject();
}

void Lister::listGroup(const TypedStreamReader::Group& group) {
    // A group of one plain value takes one line; other groups have their types on a line above.
    const bool hasHead = group.text.size() != 1;
    if (hasHead) putLine(group.offset, escaped(group.text));
    if (hasHead) ++level_;
    TypeLeaves leaves(*group.types);
    uint64_t steps = 0;
    while (const std::optional<TypeLeaves::Leaf> leaf = leaves.next()) {
        if (!reader_.countSteps(leaves.steps() - std::exchange(steps, leaves.steps()))) break;
        listLeaf(*leaf, reader_.offset());
        if (reader_.hasFailed()) break;
    }
    if (hasHead) --level_;
}

void Lister::listGroups() {
    while (!reader_.hasFailed() && !reader_.isAtEnd() && !reader_.isAtEndOfObject()) {
        const TypedStreamReader::Group group = reader_.beginGroup();
        if (!reader_.hasFailed()) listGroup(group);
    }
}

bool Lister::list() {
    if (reader_.hasFailed()) return false;
    line_(std::string("typed stream, version 4, ") + (reader_.isBigEndian() ? "big" : "little") +
          "-endian, system version " + std::to_string(reader_.systemVersion()));
    listGroups();
    if (!reader_.isAtEnd()) reader_.fail("the end of an object that was never begun");
    return !reader_.hasFailed();
}

}  // namespace

bool listTypedStream(const NSData& data, const std::function<void(std::string_view line)>& line, std::string* error) {
    Lister lister(data, line);
    if (lister.list()) return true;
    if (error) *error = lister.error();
    return false;
}

}  // namespace qz
