#include "QzAnno/platform/foundation/NSArchiver.h"

#include <cassert>
#include <cmath>
#include <unordered_map>

#include "platform/foundation/CodedGraph.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/TypedStreamTypes.h"
#include "platform/foundation/TypedStreamWriter.h"

namespace qz {

struct NSArchiver::State {
    struct WrittenObject {
        // Keeps the object alive, so that no other object gets its address.
        Ref<NSObject> object;
        uint32_t number;
        bool hasEnded;
        CodedGraph::Extent extent;
    };

    TypedStreamWriter writer;
    CodedGraph graph;
    std::unordered_map<const NSObject*, WrittenObject> objects;
    std::unordered_map<std::string, EncodedTypes> types;
};

NSArchiver::NSArchiver() : state_(std::make_unique<State>()) {}

NSArchiver::~NSArchiver() = default;

Ref<NSArchiver> NSArchiver::init() {
    return Ref<NSArchiver>(new NSArchiver());
}

Ref<NSData> NSArchiver::archivedDataWithRootObject(const Ref<NSObject>& rootObject, std::string* error) {
    const Ref<NSArchiver> archiver = init();
    archiver->encodeRootObject(rootObject);
    if (error && archiver->hasFailed()) *error = archiver->error();
    return archiver->archiverData();
}

void NSArchiver::fail(std::string reason) {
    if (hasFailed()) return;
    error_ = oneLine(reason);
}

void NSArchiver::addPlaceOfFailure(std::string_view place) {
    // The innermost places say most; deep nesting has too many for one line.
    constexpr size_t bytesMax = 500;
    if (!hasFailed() || error_.starts_with("…")) return;
    error_.insert(0, (error_.size() < bytesMax ? oneLine(place) : "…") + " > ");
}

bool NSArchiver::countKey(size_t entries) {
    if (!hasFailed() && !state_->graph.countKey(entries)) fail(state_->graph.refusal());
    return !hasFailed();
}

Ref<NSData> NSArchiver::archiverData() const {
    return hasFailed() ? Ref<NSData>() : NSData::dataWithBytes(state_->writer.bytes());
}

bool NSArchiver::encodeObject(const Ref<NSObject>& object) {
    if (hasFailed()) return false;
    state_->writer.writeSharedString("@");
    writeObject(object);
    return !hasFailed();
}

bool NSArchiver::encodeArrayOfObjCType(char type, std::span<const uint8_t> bytes) {
    assert(type == 'c' || type == 'C');
    const std::string types = "[" + std::to_string(bytes.size()) + type + "]";
    const std::string_view raw(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return encodeValuesOfObjCTypes(types, {raw});
}

bool NSArchiver::encodeValuesOfObjCTypes(std::string_view types, std::initializer_list<CodedValue> values) {
    if (hasFailed()) return false;
    auto known = state_->types.find(std::string(types));
    if (known == state_->types.end()) {
        std::string error;
        std::optional<EncodedTypes> parsed = EncodedTypes::parse(types, &error);
        if (!parsed) {
            fail(error);
            return false;
        }
        known = state_->types.emplace(types, std::move(*parsed)).first;
    }
    state_->writer.writeSharedString(types);
    TypeLeaves leaves(known->second);
    for (const CodedValue& value : values) {
        const std::optional<TypeLeaves::Leaf> leaf = leaves.next();
        assert(leaf && "more values than types");
        writeValue(value, leaf->code, leaf->count);
        if (hasFailed()) return false;
    }
    assert(!leaves.next() && "more types than values");
    return true;
}

namespace {

// The bits of the integer, or no value if the form cannot hold it.
std::optional<uint64_t> bitsOf(const CodedValue& value, IntegerForm form) {
    if (const auto* natural = std::get_if<uint64_t>(&value.value())) {
        return *natural <= form.greatest() ? std::optional(*natural) : std::nullopt;
    }
    const int64_t integer = std::get<int64_t>(value.value());
    const bool fits = integer >= form.least() && (integer < 0 || static_cast<uint64_t>(integer) <= form.greatest());
    return fits ? std::optional(static_cast<uint64_t>(integer)) : std::nullopt;
}

}  // namespace

void NSArchiver::writeValue(const CodedValue& coded, char code, [[maybe_unused]] uint32_t count) {
    TypedStreamWriter& writer = state_->writer;
    const auto& value = coded.value();
    if (const std::optional<IntegerForm> form = integerFormOf(code)) {
        const std::optional<uint64_t> bits = bitsOf(coded, *form);
        if (!bits)
            fail(std::string("an integer out of range for the type \"") + code + "\"");
        else if (isRawByte(code))
            writer.writeByte(static_cast<uint8_t>(*bits));
        else if (form->isSigned)
            writer.writeSigned(static_cast<int64_t>(*bits));
        else
            writer.writeUnsigned(*bits);
    } else if (code == 'f' || code == 'd') {
        writer.writeReal(std::get<double>(value), code);
    } else if (code == '@') {
        writeObject(std::get<Ref<NSObject>>(value));
    } else if (const std::string_view characters = std::get<std::string_view>(value); code == '[') {
        assert(characters.size() == count);
        writer.writeRaw(characters);
    } else if (code == '+') {
        if (characters.size() > UINT32_MAX)
            fail("more than 4 GB of text");
        else
            writer.writeBytes(characters);
    } else if (code == '*') {
        writer.writeCString(characters);
    } else if (code == '#') {
        const CodedClass* const codedClass = codedClassNamed(characters);
        if (!codedClass || !writer.writeClass(*codedClass))
            fail(std::string(characters) + " is not a class with a coded form");
    } else {
        writer.writeSharedString(characters);
    }
}

void NSArchiver::writeObject(const Ref<NSObject>& object) {
    CodedGraph& graph = state_->graph;
    if (!object) {
        graph.passNone();
        return state_->writer.writeNil();
    }
    const auto known = state_->objects.find(object.get());
    if (known == state_->objects.end()) return writeNewObject(object);
    const auto& [kept, number, hasEnded, extent] = known->second;
    if (!hasEnded && !codedClassNamed(object->className())->allocate)
        return fail("an object of class " + object->className() + " that holds itself, which readers refuse");
    // The reader knows no more about an object that refers to itself than we do here.
    if (!graph.refer(hasEnded ? extent : CodedGraph::Extent{0, 1})) fail(graph.refusal());
    state_->writer.writeReference(number);
}

void NSArchiver::writeNewObject(const Ref<NSObject>& object) {
    const std::string className = object->className();
    const CodedClass* const codedClass = codedClassNamed(className);
    if (!codedClass || !codedClass->encode) return fail("an object of class " + className + " has no coded form");
    if (!state_->graph.begin()) return fail(state_->graph.refusal());
    const uint32_t number = state_->writer.beginObject();
    State::WrittenObject& written = state_->objects[object.get()];
    written = {object, number, false, {}};
    if (!state_->writer.writeClass(*codedClass)) fail("a superclass of " + className + " has no coded form");
    if (!hasFailed()) codedClass->encode(*object, *this);
    if (!hasFailed() && !state_->graph.end()) fail(state_->graph.refusal());
    if (hasFailed()) return addPlaceOfFailure(className);
    written.hasEnded = true;
    written.extent = state_->graph.last();
    state_->writer.endObject();
}

}  // namespace qz
