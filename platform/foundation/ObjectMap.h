#pragma once

#include <cstdint>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// Objects by object, in the order in which the keys came; the value type inside `NSDictionary` and `NSSet`.
///
/// Keys are matched by `isEqual`, which for keys without an equality of their own is identity. A key that is set again
/// keeps its place. Small maps are scanned; larger ones are found through an index.
class ObjectMap {
public:
    /// A key with what is filed under it.
    struct Entry {
        Ref<NSObject> key;    ///< never none
        Ref<NSObject> value;  ///< none where only the key counts, as in a set
        size_t hash;          ///< the key's when it was filed; a filed key must not change its hash
    };

    /// In the order in which the keys came; whatever changes the map may move them.
    const std::vector<Entry>& entries() const { return entries_; }
    /// Every key counts, one without a value too.
    ///@{
    size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    ///@}

    /// The value under the key; empty when there is none.
    Ref<NSObject> find(const NSObject& key) const;
    /// Whether the key is there, be its value none.
    bool contains(const NSObject& key) const { return findIndex(key, key.hash()) != kNone; }
    /// Files a value under a key, replacing the one that is there; an equal key that is there stays. A null key is
    /// ignored with a log line.
    void set(Ref<NSObject> key, Ref<NSObject> value);
    /// Sets every entry of the other map.
    void setAll(const ObjectMap& other);
    /// Whether there was such a key. Takes time in proportion to the size.
    bool remove(const NSObject& key);

private:
    static constexpr size_t kNone = SIZE_MAX;

    size_t findIndex(const NSObject& key, size_t hash) const;
    void enterIndex(size_t entry);
    void rebuildIndex();

    std::vector<Entry> entries_;
    // Open addressing over entry numbers + 1, 0 for a free slot; empty while the map is small.
    std::vector<uint32_t> index_;
};

}  // namespace qz
