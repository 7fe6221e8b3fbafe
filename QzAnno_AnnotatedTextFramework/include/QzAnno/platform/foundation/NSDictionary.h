#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class ObjectMap;

/// An immutable dictionary in insertion order. To edit one, make a new one.
///
/// Equal when both hold equal values under equal keys, in whatever order.
class NSDictionary final : public ObjectHolder {
public:
    /// The empty dictionary.
    static Ref<NSDictionary> dictionary();
    /// Each object under the key of the same place; of equal keys the first keeps its place and the last its object.
    /// A null key is left out with a log line, as are keys and objects without a partner. Archives read back without
    /// entries whose object is null, and property lists refuse them.
    static Ref<NSDictionary> dictionaryWithObjects(const std::vector<Ref<NSObject>>& objects,
                                                   const std::vector<Ref<NSObject>>& forKeys);
    /// For the library, which files its entries in a map.
    ///@{
    static Ref<NSDictionary> dictionaryWithMap(ObjectMap map);
    const ObjectMap& map() const { return *map_; }
    ///@}
    ~NSDictionary() override;

    /// The number of entries.
    size_t count() const;
    /// The keys, in the order in which they were filed.
    std::vector<Ref<NSObject>> allKeys() const;
    /// The object; null if there is no such key.
    Ref<NSObject> objectForKey(const NSObject& key) const;
    /// The object if it is of class `T`; null if it is not, or if there is no such key.
    template <class T>
    Ref<T> objectForKey(const NSObject& key) const {
        return std::dynamic_pointer_cast<T>(objectForKey(key));
    }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return count(); }
    std::string description() const override;
    std::string className() const override { return "NSDictionary"; }

private:
    explicit NSDictionary(ObjectMap map);

    const std::unique_ptr<const ObjectMap> map_;
};

}  // namespace qz
