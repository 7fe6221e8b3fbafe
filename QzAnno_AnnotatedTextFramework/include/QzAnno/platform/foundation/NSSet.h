#pragma once

#include <vector>

#include "QzAnno/platform/foundation/ObjectHolder.h"
#include "QzAnno/platform/foundation/ObjectMap.h"

namespace qz {

/// An immutable set in insertion order. Equal when both hold equal members, in whatever order.
class NSSet final : public ObjectHolder {
public:
    /// The empty set, one object for all.
    static Ref<NSSet> set();
    /// Of equal members the first is kept. Null members are left out, with a log line.
    ///@{
    static Ref<NSSet> setWithObject(Ref<NSObject> member);
    template <class T>
    static Ref<NSSet> setWithObjects(const std::vector<Ref<T>>& members) {
        ObjectMap map;
        for (const Ref<T>& member : members) map.set(member, nullptr);
        return setWithMap(std::move(map));
    }
    ///@}
    /// The keys of the map are the members; its values are not looked at.
    static Ref<NSSet> setWithMap(ObjectMap map);

    /// Of members; equal ones are one.
    size_t count() const { return map_.size(); }
    /// Whether the object or one equal to it is a member.
    bool containsObject(const NSObject& member) const { return map_.contains(member); }
    /// The members are the keys; the values mean nothing. Never changed; it lives as long as the set.
    const ObjectMap& map() const { return map_; }
    /// The members that are of class `T`, in order.
    template <class T>
    std::vector<Ref<T>> objects() const {
        std::vector<Ref<T>> members;
        members.reserve(map_.size());
        for (const ObjectMap::Entry& entry : map_.entries()) {
            if (auto member = std::dynamic_pointer_cast<T>(entry.key)) members.push_back(std::move(member));
        }
        return members;
    }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return map_.size(); }
    std::string description() const override;
    std::string className() const override { return "NSSet"; }

private:
    explicit NSSet(ObjectMap map) : map_(std::move(map)) {}

    const ObjectMap map_;
};

}  // namespace qz
