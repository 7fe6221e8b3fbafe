#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class ObjectMap;

/// An immutable set in insertion order. Two sets are equal if they hold equal members, in any order.
class NSSet final : public ObjectHolder {
public:
    /// The empty set; always the same object.
    static Ref<NSSet> set();
    /// Keeps the first of equal members. Null members are left out with a log line.
    ///@{
    static Ref<NSSet> setWithObject(Ref<NSObject> member);
    template <class T>
    static Ref<NSSet> setWithObjects(const std::vector<Ref<T>>& members) {
        return setWithMembers({members.begin(), members.end()});
    }
    ///@}
    /// For the library's own use: the map whose keys are the members. Its values are ignored.
    ///@{
    static Ref<NSSet> setWithMap(ObjectMap map);
    const ObjectMap& map() const { return *map_; }
    ///@}
    ~NSSet() override;

    /// The number of members.
    size_t count() const;
    /// Whether an object equal to `member` is in the set.
    bool containsObject(const NSObject& member) const;
    /// The members, in order.
    std::vector<Ref<NSObject>> allObjects() const;
    /// The members that are of class `T`, in order.
    template <class T>
    std::vector<Ref<T>> objects() const {
        std::vector<Ref<T>> members;
        for (const Ref<NSObject>& object : allObjects()) {
            if (auto member = std::dynamic_pointer_cast<T>(object)) members.push_back(std::move(member));
        }
        return members;
    }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return count(); }
    std::string description() const override;
    std::string className() const override { return "NSSet"; }

private:
    explicit NSSet(ObjectMap map);

    static Ref<NSSet> setWithMembers(const std::vector<Ref<NSObject>>& members);

    const std::unique_ptr<const ObjectMap> map_;
};

}  // namespace qz
