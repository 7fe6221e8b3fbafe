#include "QzAnno/platform/ui/NSWindowController.h"

namespace qz {

void NSWindowController::showWindow(const Ref<NSObject>& sender) {
    if (!window_) return;
    const auto* panel = dynamic_cast<const NSPanel*>(window_.get());
    if (panel && panel->becomesKeyOnlyIfNeeded())
        window_->orderFront(sender);
    else
        window_->makeKeyAndOrderFront(sender);
}

}  // namespace qz
