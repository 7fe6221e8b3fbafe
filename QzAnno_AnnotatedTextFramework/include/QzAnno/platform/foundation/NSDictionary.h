#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class ObjectMap;

/// An immutable dictionary in insertion order. To edit one, make a new one.
///
/// Two dictionaries are equal if they hold equal values under equal keys, in any order.
class NSDictionary final : public ObjectHolder {
public:
    /// The empty dictionary.
    static Ref<NSDictionary> dictionary();
    /// Stores each object under the key at the same index. Of equal keys, the first determines the position and the
    /// last the object. Null keys, and keys or objects without a counterpart, are left out with a log line. Entries
    /// whose object is null are lost in archives, and property lists refuse them.
    static Ref<NSDictionary> dictionaryWithObjects(const std::vector<Ref<NSObject>>& objects,
                                                   const std::vector<Ref<NSObject>>& forKeys);
    /// For the library's own use: the map behind the dictionary.
    ///@{
    static Ref<NSDictionary> dictionaryWithMap(ObjectMap map);
    const ObjectMap& map() const { return *map_; }
    ///@}
    ~NSDictionary() override;

    /// The number of entries.
    size_t count() const;
    /// The keys, in insertion order.
    std::vector<Ref<NSObject>> allKeys() const;
    /// Returns null if there is no such key.
    Ref<NSObject> objectForKey(const NSObject& key) const;
    /// Returns the object if it is of class `T`; null if it is not, or if there is no such key.
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
