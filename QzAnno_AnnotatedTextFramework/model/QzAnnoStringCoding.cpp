#include <algorithm>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

void encodeString(const NSObject& object, NSArchiver& archiver) {
    const auto& string = static_cast<const QzAnnoString&>(object);
    archiver.encodeObject(MutableSupport::annotations(string)) && archiver.encodeObject(string.string());
}

/// The older form stores the keys that hold everywhere separately, in an array or a set.
std::vector<Ref<NSObject>> membersOf(const Ref<NSObject>& collection, NSUnarchiver& unarchiver) {
    if (!collection) return {};
    if (const auto* array = dynamic_cast<const NSArray*>(collection.get())) return array->elements();
    std::vector<Ref<NSObject>> members;
    if (const auto* set = dynamic_cast<const NSSet*>(collection.get())) {
        for (const ObjectMap::Entry& entry : set->map().entries()) members.push_back(entry.key);
    } else {
        unarchiver.fail("the keys that hold at every character are neither an array nor a set but an object of class " +
                        collection->className());
    }
    return members;
}

Ref<NSDictionary> withFrameKeys(const Ref<NSDictionary>& annotations, const std::vector<Ref<NSObject>>& frameKeys,
                                uint32_t length, NSUnarchiver& unarchiver) {
    ObjectMap entries = annotations->map();
    for (const Ref<NSObject>& key : frameKeys) {
        auto bits = std::dynamic_pointer_cast<QzAnnoBits>(entries.find(*key));
        // A row also holds one position beyond the range.
        const uint64_t size = std::max<uint64_t>(uint64_t{length} + 1, bits ? bits->size() : QzAnnoBits::kInitialSize);
        if (!unarchiver.countMemory(size + sizeof(ObjectMap::Entry))) return {};
        bits = bits ? bits->copy() : QzAnnoBits::init();
        bits->setRange({0, length});
        entries.set(key, bits);
    }
    return NSDictionary::dictionaryWithMap(std::move(entries));
}

bool countCopies(const NSDictionary& annotations, NSUnarchiver& unarchiver) {
    uint64_t bytes = 0;
    for (const ObjectMap::Entry& entry : annotations.map().entries()) {
        const auto* const bits = dynamic_cast<const QzAnnoBits*>(entry.value.get());
        if (bits) bytes += bits->size() + sizeof(ObjectMap::Entry);
    }
    return unarchiver.countMemory(bytes);
}

bool readInto(QzAnnoString& string, NSUnarchiver& unarchiver, bool hasFrameKeys) {
    auto annotations = unarchiver.decodeObjectOfClass<NSDictionary>("NSDictionary");
    const Ref<NSObject> frameKeys = hasFrameKeys ? unarchiver.decodeObject() : nullptr;
    const auto text = unarchiver.decodeObjectOfClass<NSString>("NSString");
    if (!annotations) annotations = NSDictionary::dictionary();
    if (hasFrameKeys && !unarchiver.hasFailed()) {
        annotations =
            withFrameKeys(annotations, membersOf(frameKeys, unarchiver), text ? text->length() : 0, unarchiver);
    }
    if (unarchiver.hasFailed() || !countCopies(*annotations, unarchiver)) return false;
    MutableSupport::setString(string, text);
    // Copies, since the stream may refer to one bit set from two places.
    if (!MutableSupport::setAnnotations(string, annotations, true))
        unarchiver.fail("the annotations of a string are not a dictionary from annotation keys to bit sets");
    return !unarchiver.hasFailed();
}

template <class String>
Ref<NSObject> decodeAs(NSUnarchiver& unarchiver) {
    const std::optional<int32_t> version = unarchiver.versionForClassName("QzAnnoString");
    if (version != 0 && version != 1) return {};
    const Ref<String> string = String::init();
    return readInto(*string, unarchiver, version == 0) ? string : nullptr;
}

const CodedClassRegistration registration(
    {.name = "QzAnnoString", .version = 1, .encode = encodeString, .decode = decodeAs<QzAnnoString>});
const CodedClassRegistration mutableRegistration({.name = "QzMutableAnnoString",
                                                  .superclassName = "QzAnnoString",
                                                  .encode = encodeString,
                                                  .decode = decodeAs<QzMutableAnnoString>});

}  // namespace
}  // namespace qz
