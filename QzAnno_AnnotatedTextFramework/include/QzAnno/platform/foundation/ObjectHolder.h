#pragma once

#include <cstdint>
#include <string>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An object that holds others, which may hold others in turn, to any depth: hosts nest as they like.
///
/// Freeing goes in a loop, so no depth is too much for it. Objects that hold each other in a circle, which takes one
/// that can be edited, are never freed; break the circle first.
class ObjectHolder : public NSObject {
protected:
    ObjectHolder() = default;

    /// The first owner of a new object; for the functions that make them.
    template <class T>
    static Ref<T> owned(T* holder) {
        return Ref<T>(holder, [](ObjectHolder* unowned) { free(unowned); });
    }

private:
    static void free(ObjectHolder* holder) noexcept;

    ObjectHolder* nextToFree_ = nullptr;
};

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
