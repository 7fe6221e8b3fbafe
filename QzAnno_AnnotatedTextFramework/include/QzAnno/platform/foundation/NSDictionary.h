#pragma once

#include "QzAnno/platform/foundation/ObjectHolder.h"
#include "QzAnno/platform/foundation/ObjectMap.h"

namespace qz {

/// An immutable dictionary in insertion order. To edit one, copy its `map()`, change that, and make a new dictionary.
///
/// Equal when both hold equal values under equal keys, in whatever order.
class NSDictionary final : public ObjectHolder {
public:
    /// The empty dictionary.
    static Ref<NSDictionary> dictionary();
    /// A value should be an object, `NSNull` where there is none: archives read back without the entries whose value is
    /// none, and property lists refuse them.
    static Ref<NSDictionary> dictionaryWithMap(ObjectMap map);

    /// The entries, never changed; they live as long as the dictionary.
    const ObjectMap& map() const { return map_; }
    /// Of entries.
    size_t count() const { return map_.size(); }
    /// The value; empty when there is none.
    Ref<NSObject> objectForKey(const NSObject& key) const { return map_.find(key); }
    /// The value when it is of class `T`; empty when there is none or it is of another class.
    template <class T>
    Ref<T> objectForKey(const NSObject& key) const {
        return std::dynamic_pointer_cast<T>(map_.find(key));
    }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return map_.size(); }
    std::string description() const override;
    std::string className() const override { return "NSDictionary"; }

private:
    explicit NSDictionary(ObjectMap map) : map_(std::move(map)) {}

    const ObjectMap map_;
};

}  // namespace qz
