#include "platform/foundation/NSDictionary.h"

#include <algorithm>

namespace qz {

Ref<NSDictionary> NSDictionary::dictionary() {
    return dictionaryWithMap({});
}

Ref<NSDictionary> NSDictionary::dictionaryWithMap(ObjectMap map) {
    return Ref<NSDictionary>(new NSDictionary(std::move(map)));
}

bool NSDictionary::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* dictionary = dynamic_cast<const NSDictionary*>(&other);
    if (!dictionary || dictionary->count() != count()) return false;
    return std::ranges::all_of(map_.entries(), [&](const ObjectMap::Entry& entry) {
        const Ref<NSObject> value = dictionary->objectForKey(*entry.key);
        return value && value->isEqual(*entry.value);
    });
}

std::string NSDictionary::description() const {
    std::string text = "{";
    for (const ObjectMap::Entry& entry : map_.entries()) {
        text += (text.size() > 1 ? "; " : "") + entry.key->description() + " = " + entry.value->description();
    }
    return text + "}";
}

}  // namespace qz
