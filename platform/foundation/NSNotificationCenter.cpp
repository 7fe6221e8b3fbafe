#include "QzAnno/platform/foundation/NSNotificationCenter.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {
namespace {

bool areSameName(const Ref<NSString>& a, const Ref<NSString>& b) {
    return a && b && a->isEqualToString(*b);
}

struct Observation {
    const void* observer;
    NSNotificationCenter::Handler handler;
    Ref<NSString> name;
    const NSObject* object;
    uint64_t number;  // in the order of addition
};

}  // namespace

struct NSNotificationCenter::Observations {
    std::mutex mutex;
    std::vector<Observation> all;
    uint64_t lastNumber = 0;
};

NSNotificationCenter::NSNotificationCenter() : observations_(std::make_unique<Observations>()) {}

NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    // Never destroyed: objects destroyed at process exit still remove their observations.
    static NSNotificationCenter& center = *new NSNotificationCenter;
    return center;
}

void NSNotificationCenter::addObserver(const void* observer, Handler handler, Ref<NSString> name,
                                       const NSObject* object) {
    if (!handler) {
        NSLog("An observation of %@ without a handler is ignored\n", {name});
        return;
    }
    const std::lock_guard lock(observations_->mutex);
    observations_->all.push_back({observer, std::move(handler), std::move(name), object, ++observations_->lastNumber});
}

void NSNotificationCenter::removeObserver(const void* observer, const Ref<NSString>& name, const NSObject* object) {
    // Objects captured by a handler may call back from their destructors, so destroy them after unlocking.
    std::vector<Observation> removed;
    std::vector<Observation>& all = observations_->all;
    const std::lock_guard lock(observations_->mutex);
    const auto stays = [&](const Observation& observation) {
        return observation.observer != observer || (name && !areSameName(name, observation.name)) ||
               (object && object != observation.object);
    };
    const auto firstRemoved = std::stable_partition(all.begin(), all.end(), stays);
    removed.assign(std::make_move_iterator(firstRemoved), std::make_move_iterator(all.end()));
    all.erase(firstRemoved, all.end());
}

void NSNotificationCenter::postNotificationName(const Ref<NSString>& name, const Ref<NSObject>& object,
                                                Ref<NSDictionary> userInfo) {
    std::vector<Observation> receivers;
    {
        const std::lock_guard lock(observations_->mutex);
        std::ranges::copy_if(observations_->all, std::back_inserter(receivers), [&](const Observation& observation) {
            return (!observation.name || areSameName(observation.name, name)) &&
                   (!observation.object || observation.object == object.get());
        });
    }
    // An earlier receiver may remove a later one.
    const auto isStillObserving = [&](const Observation& observation) {
        const std::lock_guard lock(observations_->mutex);
        return std::ranges::binary_search(observations_->all, observation.number, {}, &Observation::number);
    };
    const NSNotification notification{name, object, std::move(userInfo)};
    for (const Observation& receiver : receivers) {
        if (isStillObserving(receiver)) receiver.handler(notification);
    }
}

}  // namespace qz
