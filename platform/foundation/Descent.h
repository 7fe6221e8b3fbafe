#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSObject.h"
#include "platform/foundation/Descent.h"

namespace qz {

/// A step from an object into those that it holds, while it is compared or described. What lies deeper than
/// `Limits::kNestingMax`, or comes after 2^24 steps, is not looked at: one log line says so, and two objects then count
/// as different.
class Descent {
public:
    Descent();
    ~Descent();
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;

    /// False beyond the limits, and from then on until the outermost object is done with.
    bool mayGoOn() const;
};

/// Of an object that another one holds, none included: "(null)". What lies too deep is "…".
std::string heldDescription(const NSObject* object);

}  // namespace qz
