#include "QzAnno/platform/foundation/NSDictionary.h"

#include <algorithm>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/foundation/Descent.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

NSDictionary::NSDictionary(ObjectMap map) : map_(std::make_unique<const ObjectMap>(std::move(map))) {}

NSDictionary::~NSDictionary() = default;

Ref<NSDictionary> NSDictionary::dictionary() {
    return dictionaryWithMap({});
}

Ref<NSDictionary> NSDictionary::dictionaryWithMap(ObjectMap map) {
    return owned(new NSDictionary(std::move(map)));
}

Ref<NSDictionary> NSDictionary::dictionaryWithObjects(const std::vector<Ref<NSObject>>& objects,
                                                      const std::vector<Ref<NSObject>>& forKeys) {
    if (objects.size() != forKeys.size())
        NSLog("A dictionary of %u objects for %u keys drops those without a counterpart\n",
              {static_cast<uint32_t>(objects.size()), static_cast<uint32_t>(forKeys.size())});
    ObjectMap map;
    for (size_t i = 0; i < std::min(objects.size(), forKeys.size()); ++i) map.set(forKeys[i], objects[i]);
    return dictionaryWithMap(std::move(map));
}

size_t NSDictionary::count() const {
    return map_->size();
}

std::vector<Ref<NSObject>> NSDictionary::allKeys() const {
    std::vector<Ref<NSObject>> keys;
    keys.reserve(count());
    for (const ObjectMap::Entry& entry : map_->entries()) keys.push_back(entry.key);
    return keys;
}

Ref<NSObject> NSDictionary::objectForKey(const NSObject& key) const {
    return map_->find(key);
}

bool NSDictionary::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* dictionary = dynamic_cast<const NSDictionary*>(&other);
    const Descent descent;
    if (!dictionary || dictionary->count() != count() || !descent.mayGoOn()) return false;
    return std::ranges::all_of(map_->entries(), [&](const ObjectMap::Entry& entry) {
        return dictionary->map_->contains(*entry.key) && areEqual(dictionary->objectForKey(*entry.key), entry.value);
    });
}

std::string NSDictionary::description() const {
    std::string text = "{";
    for (const ObjectMap::Entry& entry : map_->entries()) {
        text += (text.size() > 1 ? "; " : "") + heldDescription(entry.key.get()) + " = " +
                heldDescription(entry.value.get());
    }
    return text + "}";
}

}  // namespace qz
