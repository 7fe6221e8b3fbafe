#include "QzAnno/platform/foundation/NSSet.h"

#include <algorithm>

namespace qz {

Ref<NSSet> NSSet::set() {
    static const Ref<NSSet> empty = setWithMap({});
    return empty;
}

Ref<NSSet> NSSet::setWithObject(Ref<NSObject> member) {
    ObjectMap map;
    map.set(std::move(member), nullptr);
    return setWithMap(std::move(map));
}

Ref<NSSet> NSSet::setWithMap(ObjectMap map) {
    return owned(new NSSet(std::move(map)));
}

bool NSSet::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* set = dynamic_cast<const NSSet*>(&other);
    const Descent descent;
    if (!set || set->count() != count() || !descent.mayGoOn()) return false;
    return std::ranges::all_of(map_.entries(),
                               [&](const ObjectMap::Entry& entry) { return set->containsObject(*entry.key); });
}

std::string NSSet::description() const {
    std::string text = "{(";
    for (const ObjectMap::Entry& entry : map_.entries()) {
        text += (text.size() > 2 ? ", " : "") + heldDescription(entry.key.get());
    }
    return text + ")}";
}

}  // namespace qz
