#include "platform/foundation/Descent.h"

#include <utility>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/foundation/TypedStreamLimits.h"

namespace qz {
namespace {

// Per thread. The list of objects to free is linked through the objects themselves, since memory may have run out.
constinit thread_local ObjectHolder* firstToFree = nullptr;
constinit thread_local bool isFreeing = false;

struct Walk {
    uint32_t depth = 0;
    uint32_t steps = 0;
    bool isRefused = false;
};
constinit thread_local Walk walk;

}  // namespace

void ObjectHolder::free(ObjectHolder* holder) noexcept {
    holder->nextToFree_ = std::exchange(firstToFree, holder);
    if (std::exchange(isFreeing, true)) return;
    // Objects held by the freed one join the list through this function.
    while (firstToFree) {
        const ObjectHolder* const next = std::exchange(firstToFree, firstToFree->nextToFree_);
        delete next;
    }
    isFreeing = false;
}

Descent::Descent() {
    ++walk.depth;
    ++walk.steps;
}

Descent::~Descent() {
    if (--walk.depth == 0) walk = {};
}

bool Descent::mayGoOn() const {
    if (walk.isRefused) return false;
    if (walk.depth <= Limits::kNestingMax && walk.steps <= TypedStreamLimits::kUnfoldedObjectsMax) return true;
    walk.isRefused = true;
    NSLog("Objects hold each other more than %u deep, or more than %u of them: the rest is not looked at\n",
          {Limits::kNestingMax, TypedStreamLimits::kUnfoldedObjectsMax});
    return false;
}

std::string heldDescription(const NSObject* object) {
    if (!object) return "(null)";
    const Descent descent;
    return descent.mayGoOn() ? object->description() : "…";
}

}  // namespace qz
