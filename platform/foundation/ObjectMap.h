#pragma once

#include <cstdint>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// Maps objects to objects, in insertion order; the value type inside `NSDictionary` and `NSSet`.
///
/// Keys are matched by `isEqual`, which is identity unless their class defines equality. A key that is set again keeps
/// its place. Small maps are scanned; larger ones use an index.
class ObjectMap {
public:
    /// A key and its value.
    struct Entry {
        Ref<NSObject> key;    ///< never null
        Ref<NSObject> value;  ///< null where only the key counts, as in a set
        size_t hash;          ///< of the key when it was stored; it must not change afterwards
    };

    /// In insertion order; any change to the map may move the entries.
    const std::vector<Entry>& entries() const { return entries_; }
    /// Counts every key, even one with a null value.
    ///@{
    size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    ///@}

    /// Returns null if there is no such key.
    Ref<NSObject> find(const NSObject& key) const;
    /// Whether the map has the key, even with a null value.
    bool contains(const NSObject& key) const { return findIndex(key, key.hash()) != kNone; }
    /// Stores a value under a key, replacing the former value; an equal key that exists is kept. A null key is ignored
    /// with a log line.
    void set(Ref<NSObject> key, Ref<NSObject> value);
    /// Sets every entry of the other map.
    void setAll(const ObjectMap& other);
    /// Returns false if there was no such key. Takes linear time.
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
