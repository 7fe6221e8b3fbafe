#include "QzAnno/platform/foundation/NSAlertPanel.h"

#include <mutex>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {
namespace {

struct HookPlace {
    std::mutex mutex;
    AlertHook hook;
};

HookPlace& hookPlace() {
    static HookPlace place;
    return place;
}

}  // namespace

void setCriticalAlertHook(AlertHook hook) {
    const std::lock_guard lock(hookPlace().mutex);
    hookPlace().hook = std::move(hook);
}

NSAlertReturn NSRunCriticalAlertPanel(const AlertPanel& panel) {
    AlertHook hook;
    {
        const std::lock_guard lock(hookPlace().mutex);
        hook = hookPlace().hook;
    }
    if (hook) return hook(panel);
    NSStandardError("%@: %@ [%@] (%@, %@)\n",
                    {panel.title, panel.message, panel.defaultButton, panel.alternateButton, panel.otherButton});
    return NSAlertDefaultReturn;
}

}  // namespace qz
