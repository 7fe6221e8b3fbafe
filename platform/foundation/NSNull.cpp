#include "platform/foundation/NSNull.h"

namespace qz {

Ref<NSNull> NSNull::null() {
    static const Ref<NSNull> null(new NSNull());
    return null;
}

}  // namespace qz
