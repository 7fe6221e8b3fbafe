#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace qz {

/// Shared ownership of an object; null where an operation yields no object.
template <class T>
using Ref = std::shared_ptr<T>;

/// A back reference: does not own, and expires with its object.
template <class T>
using WeakRef = std::weak_ptr<T>;

/// The polymorphic root. Objects are held by `Ref` and made by static functions of their class.
///
/// Unless a class says otherwise, equality and hash go by identity, and an object may be used from one thread at a
/// time.
class NSObject : public std::enable_shared_from_this<NSObject> {
public:
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    /// Whether both have the same value, as defined by this object's class. Dictionaries and sets match keys with it.
    virtual bool isEqual(const NSObject& other) const;
    /// Equal objects have equal hashes. Not stable across runs, so do not store it.
    virtual size_t hash() const;
    /// Readable text in UTF-8, for logs and lists.
    virtual std::string description() const;
    /// The name under which archives find the coded form (`CodedClass`); also used in messages.
    virtual std::string className() const = 0;

protected:
    NSObject() = default;
};

/// An object that holds others, which may hold others in turn, to any depth.
///
/// Freeing is iterative, so no depth overflows the stack. A reference cycle, which takes a mutable object, is never
/// freed unless you break it first.
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

/// A further owner of an object that is already owned.
template <class T>
Ref<T> refTo(T& object) {
    return std::static_pointer_cast<T>(object.shared_from_this());
}

/// Whether the objects are equal, or both null.
bool areEqual(const Ref<NSObject>& a, const Ref<NSObject>& b);

}  // namespace qz
