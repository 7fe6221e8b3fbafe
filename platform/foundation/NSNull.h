#pragma once

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// Stands for "nothing" in a collection, which cannot hold null. There is only one.
class NSNull final : public NSObject {
public:
    /// The only object, shared by all threads.
    static Ref<NSNull> null();

    std::string description() const override { return "<null>"; }
    std::string className() const override { return "NSNull"; }

private:
    NSNull() = default;
};

}  // namespace qz
