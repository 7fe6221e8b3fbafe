#include "QzAnno/platform/foundation/NSSet.h"

#include <algorithm>

#include "platform/foundation/Descent.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

NSSet::NSSet(ObjectMap map) : map_(std::make_unique<const ObjectMap>(std::move(map))) {}

NSSet::~NSSet() = default;

Ref<NSSet> NSSet::set() {
    static const Ref<NSSet> empty = setWithMap({});
    return empty;
}

Ref<NSSet> NSSet::setWithObject(Ref<NSObject> member) {
    ObjectMap map;
    map.set(std::move(member), nullptr);
    return setWithMap(std::move(map));
}

Ref<NSSet> NSSet::setWithMembers(const std::vector<Ref<NSObject>>& members) {
    ObjectMap map;
    for (const Ref<NSObject>& member : members) map.set(member, nullptr);
    return setWithMap(std::move(map));
}

Ref<NSSet> NSSet::setWithMap(ObjectMap map) {
    return owned(new NSSet(std::move(map)));
}

size_t NSSet::count() const {
    return map_->size();
}

bool NSSet::containsObject(const NSObject& member) const {
    return map_->contains(member);
}

std::vector<Ref<NSObject>> NSSet::allObjects() const {
    std::vector<Ref<NSObject>> members;
    members.reserve(count());
    for (const ObjectMap::Entry& entry : map_->entries()) members.push_back(entry.key);
    return members;
}

bool NSSet::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* set = dynamic_cast<const NSSet*>(&other);
    const Descent descent;
    if (!set || set->count() != count() || !descent.mayGoOn()) return false;
    return std::ranges::all_of(map_->entries(),
                               [&](const ObjectMap::Entry& entry) { return set->containsObject(*entry.key); });
}

std::string NSSet::description() const {
    std::string text = "{(";
    for (const ObjectMap::Entry& entry : map_->entries()) {
        text += (text.size() > 2 ? ", " : "") + heldDescription(entry.key.get());
    }
    return text + ")}";
}

}  // namespace qz
