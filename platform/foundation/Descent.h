#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSObject.h"
#include "platform/foundation/Descent.h"

namespace qz {

/// One step from an object into those that it holds, while it is compared or described. Objects deeper than
/// `Limits::kNestingMax`, or beyond 2^24 steps, are not visited: one log line says so, and two objects compared then
/// count as different.
class Descent {
public:
    Descent();
    ~Descent();
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;

    /// False beyond the limits, and from then on until the outermost object is finished.
    bool mayGoOn() const;
};

/// The description of an object held by another: "(null)" for null, "…" if it is too deep.
std::string heldDescription(const NSObject* object);

}  // namespace qz
