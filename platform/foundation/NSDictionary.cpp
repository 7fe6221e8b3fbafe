#include "QzAnno/platform/foundation/NSDictionary.h"

#include <algorithm>

namespace qz {

Ref<NSDictionary> NSDictionary::dictionary() {
    return dictionaryWithMap({});
}

Ref<NSDictionary> NSDictionary::dictionaryWithMap(ObjectMap map) {
    return owned(new NSDictionary(std::move(map)));
}

bool NSDictionary::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* dictionary = dynamic_cast<const NSDictionary*>(&other);
    const Descent descent;
    if (!dictionary || dictionary->count() != count() || !descent.mayGoOn()) return false;
    return std::ranges::all_of(map_.entries(), [&](const ObjectMap::Entry& entry) {
        return dictionary->map_.contains(*entry.key) && areEqual(dictionary->objectForKey(*entry.key), entry.value);
    });
}

std::string NSDictionary::description() const {
    std::string text = "{";
    for (const ObjectMap::Entry& entry : map_.entries()) {
        text += (text.size() > 1 ? "; " : "") + heldDescription(entry.key.get()) + " = " +
                heldDescription(entry.value.get());
    }
    return text + "}";
}

}  // namespace qz
