#include "QzAnno/platform/foundation/NSUnarchiver.h"

#include <algorithm>
#include <cassert>
#include <deque>
#include <map>
#include <type_traits>
#include <utility>

#include "platform/foundation/CodedGraph.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/TypedStreamReader.h"

namespace qz {
namespace {

// Memory of one object: the class with the most fields, its reference counts, and its entry in the table.
constexpr uint64_t kObjectMemory = 128;
// The types of a group take a byte, as a reference, and an object or a reference to it another.
constexpr uint64_t kLeastGroupBytes = 2;

}  // namespace

struct NSUnarchiver::State {
    enum class Stage : uint8_t { unread, reading, done, passedOver };
    struct ObjectEntry {
        Ref<NSObject> object;
        Stage stage = Stage::unread;
        uint16_t height = 0;
        uint32_t unfolded = 0;
    };

    explicit State(const Ref<NSData>& archive) : data(archive ? archive : NSData::data()), reader(data->view()) {}

    void checkGraph(bool isWithinLimits) {
        if (!isWithinLimits) reader.fail(graph.refusal());
    }

    const Ref<NSData> data;
    TypedStreamReader reader;
    CodedGraph graph;
    // Indexed by the numbers in the stream's table; the entries of classes and C strings stay empty.
    std::deque<ObjectEntry> objects;
    // The fewest bytes that the collections being read still need for their remaining groups.
    uint64_t expectedBytes = 0;
    // How many discarded objects are being read, because others may refer to objects inside them.
    uint32_t passedOverObjects = 0;
    // The class of the innermost object, for messages.
    std::string_view className;
    std::map<const void*, std::shared_ptr<void>> contexts;  // by the type of the object
};

NSUnarchiver::NSUnarchiver(const Ref<NSData>& data) : state_(std::make_unique<State>(data)) {}

NSUnarchiver::~NSUnarchiver() = default;

Ref<NSUnarchiver> NSUnarchiver::initForReadingWithData(const Ref<NSData>& data) {
    return Ref<NSUnarchiver>(new NSUnarchiver(data));
}

Ref<NSObject> NSUnarchiver::unarchiveObjectWithData(const Ref<NSData>& data, std::string* error) {
    const Ref<NSUnarchiver> unarchiver = initForReadingWithData(data);
    const Ref<NSObject> object = unarchiver->decodeObject();
    if (error && unarchiver->hasFailed()) *error = unarchiver->error();
    return object;
}

void NSUnarchiver::fail(const std::string& reason) {
    state_->reader.fail(reason);
}

bool NSUnarchiver::hasFailed() const {
    return state_->reader.hasFailed();
}

const std::string& NSUnarchiver::error() const {
    return state_->reader.error();
}

bool NSUnarchiver::isAtEnd() {
    return hasFailed() || state_->reader.isAtEnd();
}

uint32_t NSUnarchiver::systemVersion() const {
    return state_->reader.systemVersion();
}

std::optional<int32_t> NSUnarchiver::versionForClassName(std::string_view className) const {
    const TypedStreamReader::ClassRecord* const record = state_->reader.classNamed(className);
    return record ? std::optional(record->version) : std::nullopt;
}

void NSUnarchiver::failForClass(const NSObject& object, std::string_view expectedClass) {
    fail("an object of class " + object.className() + " where one of class " + std::string(expectedClass) +
         " is expected");
}

bool NSUnarchiver::countMemory(uint64_t bytes) {
    return state_->reader.countMemory(bytes);
}

Ref<NSObject> NSUnarchiver::valueUnderRepeatedKey(const Ref<NSObject>& /*former*/, const Ref<NSObject>& later) {
    return later;
}

bool NSUnarchiver::countKey(size_t entries) {
    state_->checkGraph(state_->graph.countKey(entries));
    return !hasFailed();
}

bool NSUnarchiver::expectObjects(uint64_t count) {
    const uint64_t bytesLeft = state_->reader.bytesLeft();
    if (count <= bytesLeft && count * kLeastGroupBytes <= bytesLeft - std::min(bytesLeft, state_->expectedBytes)) {
        state_->expectedBytes += count * kLeastGroupBytes;
    } else {
        fail("a collection of " + std::to_string(count) + " objects, but only " + std::to_string(bytesLeft) +
             " bytes are left for them and the rest");
    }
    return !hasFailed();
}

Ref<NSObject> NSUnarchiver::decodeExpectedObject() {
    if (hasFailed()) return {};
    assert(state_->expectedBytes >= kLeastGroupBytes);
    state_->expectedBytes -= kLeastGroupBytes;
    return decodeObject();
}

std::optional<std::string_view> NSUnarchiver::typesOfNextGroup() {
    const TypedStreamReader::Group group = state_->reader.nextGroup();
    return group.types && !hasFailed() ? std::optional(group.text) : std::nullopt;
}

Ref<NSObject> NSUnarchiver::decodeObject() {
    Ref<NSObject> object;
    decodeValueOfObjCType("@", &object);
    return object;
}

bool NSUnarchiver::decodeValuesOfObjCTypes(std::string_view types, std::initializer_list<CodedSlot> slots) {
    TypedStreamReader& reader = state_->reader;
    const TypedStreamReader::Group group = reader.beginGroup();
    if (hasFailed()) return false;
    if (group.text != types) {
        std::string reason =
            "values of the types " + quotedExcerpt(group.text) + " where " + quotedExcerpt(types) + " are expected";
        if (!state_->className.empty()) reason += " in an object of class " + quotedExcerpt(state_->className);
        reader.failAt(group.offset, reason);
        return false;
    }
    TypeLeaves leaves(*group.types);
    for (const CodedSlot& slot : slots) {
        const std::optional<TypeLeaves::Leaf> leaf = leaves.next();
        assert(leaf && "more slots than types");
        readLeaf(leaf->code, leaf->count, slot);
    }
    assert(!leaves.next() && "more types than slots");
    return !hasFailed();
}

std::optional<std::string_view> NSUnarchiver::decodeArrayOfObjCType(char type, size_t count) {
    assert(type == 'c' || type == 'C');
    std::string_view raw;
    if (!decodeValueOfObjCType("[" + std::to_string(count) + type + "]", &raw)) return {};
    return raw;
}

namespace {

// Reads one value of any kind into the caller's slot; a slot of the wrong kind is a bug.
class LeafReading {
public:
    LeafReading(TypedStreamReader& reader, char code, uint32_t count) : reader_(reader), code_(code), count_(count) {}

    void operator()(bool* slot) const { *slot = readInteger().bits != 0; }

    template <class Integer>
    requires std::is_integral_v<Integer>
    void operator()(Integer* slot) const {
        const auto [bits, isNegative] = readInteger();
        const auto value = static_cast<Integer>(bits);
        if (static_cast<uint64_t>(value) == bits && (value < 0) == isNegative)
            *slot = value;
        else
            reader_.fail(std::string("an integer of the type \"") + code_ + "\" that is too large here");
    }

    template <class Real>
    requires std::is_floating_point_v<Real>
    void operator()(Real* slot) const {
        assert(code_ == 'f' || code_ == 'd');
        *slot = static_cast<Real>(reader_.readReal(code_));
    }

    void operator()(std::string_view* slot) const {
        const std::optional<std::string_view> characters = readCharacters();
        if (!characters)
            reader_.fail("nil where characters are expected");
        else
            *slot = *characters;
    }

    void operator()(Ref<NSObject>*) const { assert(false && "objects are read by the unarchiver"); }

    void passOver() const {
        if (integerFormOf(code_))
            readInteger();
        else if (code_ == 'f' || code_ == 'd')
            reader_.readReal(code_);
        else
            readCharacters();
    }

private:
    struct Integer {
        uint64_t bits;
        bool isNegative;
    };

    Integer readInteger() const {
        const std::optional<IntegerForm> form = integerFormOf(code_);
        assert(form);
        if (!form->isSigned) return {reader_.readUnsigned(code_), false};
        const int64_t value = reader_.readSigned(code_);
        return {static_cast<uint64_t>(value), value < 0};
    }

    std::optional<std::string_view> readCharacters() const {
        switch (code_) {
            case '[':
                return reader_.readRaw(count_);
            case '+':
                return reader_.readBytes();
            case '*': {
                const TypedStreamReader::Entry entry = reader_.readCString();
                if (entry.kind == TypedStreamReader::Entry::nil) return {};
                return reader_.sharedString(entry.content);
            }
            case '#': {
                const TypedStreamReader::Entry entry = reader_.readClass();
                if (entry.kind == TypedStreamReader::Entry::nil) return {};
                return reader_.classRecord(entry.content).name;
            }
            default:
                assert(code_ == '%' || code_ == ':');
                return reader_.readSharedString();
        }
    }

    TypedStreamReader& reader_;
    const char code_;
    const uint32_t count_;
};

}  // namespace

void NSUnarchiver::readLeaf(char code, uint32_t count, CodedSlot slot) {
    if (hasFailed()) return;
    if (code == '@')
        *std::get<Ref<NSObject>*>(slot) = readObject();
    else
        std::visit(LeafReading(state_->reader, code, count), slot);
}

Ref<NSObject> NSUnarchiver::readObject() {
    const size_t offset = state_->reader.offset();
    const TypedStreamReader::Entry entry = state_->reader.readObject();
    Ref<NSObject> object;
    if (hasFailed() || entry.kind == TypedStreamReader::Entry::nil) {
        state_->graph.passNone();
    } else {
        object = entry.kind == TypedStreamReader::Entry::reference ? readReference(entry.number, offset)
                                                                   : readNewObject(entry.number, entry.content);
    }
    return hasFailed() ? Ref<NSObject>() : object;
}

Ref<NSObject> NSUnarchiver::readReference(uint32_t number, size_t offset) {
    const State::ObjectEntry& entry = state_->objects[number];
    const bool isKnown = entry.stage == State::Stage::done || entry.object;
    if (isKnown || state_->passedOverObjects > 0) {
        const bool hasEnded = entry.stage == State::Stage::done;
        state_->checkGraph(state_->graph.refer(hasEnded ? CodedGraph::Extent{entry.height, entry.unfolded}
                                                        : CodedGraph::Extent{0, 1}));
    } else if (entry.stage == State::Stage::reading) {
        state_->reader.failAt(offset, "object " + std::to_string(number) + " holds itself, which its class cannot");
    } else {
        state_->reader.failAt(offset, "a reference to object " + std::to_string(number) + ", whose class is not known");
    }
    return entry.object;
}

Ref<NSObject> NSUnarchiver::readNewObject(uint32_t number, uint32_t classNumber) {
    State& state = *state_;
    const std::string_view className = state.reader.classRecord(classNumber).name;
    const CodedClass* const codedClass = codedClassNamed(className);
    const bool isKnown = codedClass && (codedClass->decode || codedClass->allocate);
    if (!isKnown && state.passedOverObjects == 0)
        fail("objects of class " + quotedExcerpt(className) + " cannot be read here");
    if (!countMemory(kObjectMemory)) return {};
    state.checkGraph(state.graph.begin());
    if (hasFailed()) return {};
    state.objects.resize(number + 1);
    state.objects[number].stage = State::Stage::reading;
    const std::string_view outerClassName = std::exchange(state.className, className);
    Ref<NSObject> object;
    if (isKnown) object = readContents(*codedClass, number);
    if (!object) passOverGroups();
    state.reader.readEndOfObject();
    state.className = outerClassName;
    if (hasFailed()) return {};
    state.checkGraph(state.graph.end());
    const auto [height, unfolded] = state.graph.last();
    state.objects[number] = {object, isKnown ? State::Stage::done : State::Stage::passedOver,
                             static_cast<uint16_t>(height), unfolded};
    return object;
}

Ref<NSObject> NSUnarchiver::readContents(const CodedClass& codedClass, uint32_t number) {
    const uint64_t expectedBefore = state_->expectedBytes;
    Ref<NSObject> object;
    if (codedClass.decode) {
        object = codedClass.decode(*this);
    } else {
        object = codedClass.allocate();
        state_->objects[number].object = object;
        if (!codedClass.fill(*object, *this)) object = nullptr;
    }
    // A collection that failed leaves groups unread; stop expecting them.
    state_->expectedBytes = expectedBefore;
    return object;
}

// Reads the rest of the innermost object, because others may refer to objects in it.
void NSUnarchiver::passOverGroups() {
    TypedStreamReader& reader = state_->reader;
    ++state_->passedOverObjects;
    while (!hasFailed() && !reader.isAtEndOfObject()) {
        const TypedStreamReader::Group group = reader.beginGroup();
        if (hasFailed()) break;
        TypeLeaves leaves(*group.types);
        uint64_t steps = 0;
        while (const std::optional<TypeLeaves::Leaf> leaf = leaves.next()) {
            if (!reader.countSteps(leaves.steps() - std::exchange(steps, leaves.steps()))) break;
            if (leaf->code == '@')
                readObject();
            else
                LeafReading(reader, leaf->code, leaf->count).passOver();
            if (hasFailed()) break;
        }
    }
    --state_->passedOverObjects;
}

void NSUnarchiver::setContext(const void* type, std::shared_ptr<void> context) {
    state_->contexts[type] = std::move(context);
}

std::shared_ptr<void> NSUnarchiver::contextOfType(const void* type) const {
    const auto found = state_->contexts.find(type);
    return found == state_->contexts.end() ? nullptr : found->second;
}

}  // namespace qz
