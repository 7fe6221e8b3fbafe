#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace qz {

/// Shared ownership of an object; empty where an operation yields none.
template <class T>
using Ref = std::shared_ptr<T>;

/// A back reference: does not own, and turns empty when its object dies.
template <class T>
using WeakRef = std::weak_ptr<T>;

/// The polymorphic root. Objects live behind `Ref` and are made by the static functions of their class.
///
/// Unless a class says otherwise, equality and hash are identity, and an object is used from one thread at a time.
class NSObject : public std::enable_shared_from_this<NSObject> {
public:
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    /// Whether both stand for the same value, by the rule of this object's class. Dictionaries and sets match their
    /// keys by it.
    virtual bool isEqual(const NSObject& other) const;
    /// Equal objects have equal hashes. Not stable across runs, so never stored.
    virtual size_t hash() const;
    /// Readable text in UTF-8, for logs and lists.
    virtual std::string description() const;
    /// By which archives find the coded form (`CodedClass`); also names the class in messages.
    virtual std::string className() const = 0;

protected:
    NSObject() = default;
};

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

/// A further owner of an object that is already owned.
template <class T>
Ref<T> refTo(T& object) {
    return std::static_pointer_cast<T>(object.shared_from_this());
}

/// Equal objects, or none on both sides.
bool areEqual(const Ref<NSObject>& a, const Ref<NSObject>& b);

}  // namespace qz
