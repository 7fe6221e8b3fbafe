#include "QzAnno/platform/ui/NSKeyValueObserving.h"

#include <algorithm>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {

void NSKeyValueObserving::defineProperty(const std::string& key, Property property) {
    properties_[key] = std::move(property);
}

Ref<NSObject> NSKeyValueObserving::valueForKey(const std::string& key) const {
    const auto found = properties_.find(key);
    return found == properties_.end() ? valueForUndefinedKey(key) : found->second.get();
}

Ref<NSObject> NSKeyValueObserving::valueForUndefinedKey(const std::string& key) const {
    NSLog("There is no property %@ to bind to; correct the name in the interface file\n", {key});
    return {};
}

bool NSKeyValueObserving::setValue(const Ref<NSObject>& value, const std::string& forKey) {
    const auto found = properties_.find(forKey);
    if (found == properties_.end() || !found->second.set) return false;
    willChangeValueForKey(forKey);
    found->second.set(value);
    didChangeValueForKey(forKey);
    return true;
}

void NSKeyValueObserving::addObserver(const void* observer, ChangeHandler willChange, ChangeHandler didChange) {
    observations_.push_back({observer, std::move(willChange), std::move(didChange)});
}

void NSKeyValueObserving::removeObserver(const void* observer) {
    std::erase_if(observations_, [&](const Observation& o) { return o.observer == observer; });
}

void NSKeyValueObserving::willChangeValueForKey(const std::string& key) {
    announce(key, &Observation::willChange);
}

void NSKeyValueObserving::didChangeValueForKey(const std::string& key) {
    announce(key, &Observation::didChange);
}

void NSKeyValueObserving::announce(const std::string& key, ChangeHandler Observation::*handler) {
    // A handler may add and remove observers.
    const std::vector<Observation> observations = observations_;
    for (const Observation& observation : observations) {
        if (observation.*handler) (observation.*handler)(key);
    }
}

}  // namespace qz
