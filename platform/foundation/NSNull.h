#pragma once

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// Stands for "nothing" in a collection, which cannot hold none. There is one.
class NSNull final : public NSObject {
public:
    /// The one object, the same for every thread.
    static Ref<NSNull> null();

    std::string description() const override { return "<null>"; }
    std::string className() const override { return "NSNull"; }

private:
    NSNull() = default;
};

}  // namespace qz
