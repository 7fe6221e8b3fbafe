#include "QzAnno/platform/ui/NSResponder.h"

namespace qz {

void NSResponder::setHandler(const std::string& action, ActionHandler handler) {
    handlers_[action] = std::move(handler);
}

bool NSResponder::respondsTo(const std::string& action) const {
    return handlers_.contains(action);
}

bool NSResponder::tryToPerform(const std::string& action, const Ref<NSObject>& sender) {
    const auto found = handlers_.find(action);
    if (found == handlers_.end()) return false;
    // The handler may register others or destroy this object.
    const ActionHandler handler = found->second;
    handler(sender);
    return true;
}

}  // namespace qz
