#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

constexpr uint64_t kElementMemory = sizeof(Ref<NSObject>);
// An entry and its index slots while both grow: old and new exist at once.
constexpr uint64_t kMapEntryMemory = 4 * sizeof(ObjectMap::Entry);

bool encodeCount(NSArchiver& archiver, std::string_view type, size_t count) {
    if (count > INT32_MAX)
        archiver.fail("a collection of more than 2,147,483,647 objects");
    else
        archiver.encodeValueOfObjCType(type, uint64_t{count});
    return !archiver.hasFailed();
}

// Reads a count of objects or entries, each of which takes `groups` groups and `memory` bytes.
std::optional<uint32_t> decodeCount(NSUnarchiver& unarchiver, std::string_view type, uint32_t groups, uint64_t memory) {
    int64_t count = 0;
    if (!unarchiver.decodeValueOfObjCType(type, &count)) return {};
    if (count < 0) unarchiver.fail("a collection of " + std::to_string(count) + " objects");
    if (unarchiver.hasFailed()) return {};
    const auto natural = static_cast<uint64_t>(count);
    if (!unarchiver.expectObjects(natural * groups) || !unarchiver.countMemory(natural * memory)) return {};
    return static_cast<uint32_t>(natural);
}

// Logs one line per collection, however many items are dropped.
void tellDropped(NSUnarchiver& unarchiver, size_t dropped, size_t count, std::string_view of) {
    if (dropped == 0) return;
    unarchiver.countDropped(dropped);
    NSLog("%@ of %@ %@ decode as no object and are dropped\n", {std::to_string(dropped), std::to_string(count), of});
}

void encodeArray(const NSObject& object, NSArchiver& archiver) {
    const auto& elements = static_cast<const NSArray&>(object).elements();
    if (!encodeCount(archiver, "i", elements.size())) return;
    for (size_t i = 0; i < elements.size(); ++i) {
        if (!archiver.encodeObject(elements[i])) return archiver.addPlaceOfFailure("element " + std::to_string(i));
    }
}

Ref<NSObject> decodeArray(NSUnarchiver& unarchiver) {
    const std::optional<uint32_t> count = decodeCount(unarchiver, "i", 1, kElementMemory);
    if (!count) return {};
    std::vector<Ref<NSObject>> elements;
    elements.reserve(*count);
    for (uint32_t i = 0; i < *count && !unarchiver.hasFailed(); ++i) {
        Ref<NSObject> element = unarchiver.decodeExpectedObject();
        if (element) elements.push_back(std::move(element));
    }
    if (unarchiver.hasFailed()) return {};
    tellDropped(unarchiver, *count - elements.size(), *count, "elements of an array");
    return NSArray::arrayWithObjects(std::move(elements));
}

const CodedClassRegistration registerArray(
    {.name = "NSArray", .encode = encodeArray, .decode = decodeArray, .aliases = {"NSMutableArray"}});

// The description of an object that is not a string can be long.
std::string placeOf(const NSObject& key, size_t entry) {
    const auto* const name = dynamic_cast<const NSString*>(&key);
    return name ? quotedExcerpt(name->utf8()) : "entry " + std::to_string(entry);
}

void encodeDictionary(const NSObject& object, NSArchiver& archiver) {
    const auto& entries = static_cast<const NSDictionary&>(object).map().entries();
    if (!encodeCount(archiver, "i", entries.size())) return;
    for (size_t i = 0; i < entries.size(); ++i) {
        const bool isWritten =
            archiver.encodeObject(entries[i].key) && archiver.countKey(i) && archiver.encodeObject(entries[i].value);
        if (!isWritten) return archiver.addPlaceOfFailure(placeOf(*entries[i].key, i));
    }
}

Ref<NSObject> decodeDictionary(NSUnarchiver& unarchiver) {
    const std::optional<uint32_t> count = decodeCount(unarchiver, "i", 2, kMapEntryMemory);
    if (!count) return {};
    ObjectMap entries;
    size_t dropped = 0;
    for (uint32_t i = 0; i < *count; ++i) {
        const Ref<NSObject> key = unarchiver.decodeExpectedObject();
        if (key && !unarchiver.countKey(entries.size())) return {};
        const Ref<NSObject> value = unarchiver.decodeExpectedObject();
        if (unarchiver.hasFailed()) return {};
        if (!key || !value) {
            ++dropped;
            continue;
        }
        const Ref<NSObject> former = entries.find(*key);
        entries.set(key, former ? unarchiver.valueUnderRepeatedKey(former, value) : value);
        if (unarchiver.hasFailed()) return {};
    }
    tellDropped(unarchiver, dropped, *count, "entries of a dictionary");
    return NSDictionary::dictionaryWithMap(std::move(entries));
}

const CodedClassRegistration registerDictionary({.name = "NSDictionary",
                                                 .encode = encodeDictionary,
                                                 .decode = decodeDictionary,
                                                 .aliases = {"NSMutableDictionary"}});

void encodeSet(const NSObject& object, NSArchiver& archiver) {
    const auto& entries = static_cast<const NSSet&>(object).map().entries();
    if (!encodeCount(archiver, "I", entries.size())) return;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (!archiver.encodeObject(entries[i].key) || !archiver.countKey(i)) {
            return archiver.addPlaceOfFailure("member " + std::to_string(i));
        }
    }
}

Ref<NSObject> decodeSet(NSUnarchiver& unarchiver) {
    const std::optional<uint32_t> count = decodeCount(unarchiver, "I", 1, kMapEntryMemory);
    if (!count) return {};
    ObjectMap members;
    size_t dropped = 0;
    for (uint32_t i = 0; i < *count && !unarchiver.hasFailed(); ++i) {
        const Ref<NSObject> member = unarchiver.decodeExpectedObject();
        if (!member)
            ++dropped;
        else if (unarchiver.countKey(members.size()))
            members.set(member, nullptr);
    }
    if (unarchiver.hasFailed()) return {};
    tellDropped(unarchiver, dropped, *count, "members of a set");
    return NSSet::setWithMap(std::move(members));
}

const CodedClassRegistration registerSet(
    {.name = "NSSet", .encode = encodeSet, .decode = decodeSet, .aliases = {"NSMutableSet"}});

}  // namespace
}  // namespace qz
