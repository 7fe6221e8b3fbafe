#include "platform/foundation/ObjectMap.h"

#include <bit>
#include <new>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {
namespace {

constexpr size_t kScannedMax = 16;

}  // namespace

size_t ObjectMap::findIndex(const NSObject& key, size_t hash) const {
    const auto matches = [&](const Entry& entry) {
        return entry.key.get() == &key || (entry.hash == hash && entry.key->isEqual(key));
    };
    if (index_.empty()) {
        for (size_t i = 0; i < entries_.size(); ++i) {
            if (matches(entries_[i])) return i;
        }
        return kNone;
    }
    const size_t mask = index_.size() - 1;
    for (size_t slot = hash & mask; index_[slot] != 0; slot = (slot + 1) & mask) {
        if (matches(entries_[index_[slot] - 1])) return index_[slot] - 1;
    }
    return kNone;
}

void ObjectMap::enterIndex(size_t entry) {
    const size_t mask = index_.size() - 1;
    size_t slot = entries_[entry].hash & mask;
    while (index_[slot] != 0) slot = (slot + 1) & mask;
    index_[slot] = static_cast<uint32_t>(entry + 1);
}

void ObjectMap::rebuildIndex() {
    // Without memory for an index, fall back to scanning the entries.
    index_.clear();
    if (entries_.size() <= kScannedMax) return;
    try {
        index_.resize(std::bit_ceil(entries_.size() * 4));
    } catch (const std::bad_alloc&) {
        return;
    }
    for (size_t i = 0; i < entries_.size(); ++i) enterIndex(i);
}

Ref<NSObject> ObjectMap::find(const NSObject& key) const {
    const size_t entry = findIndex(key, key.hash());
    return entry == kNone ? Ref<NSObject>() : entries_[entry].value;
}

void ObjectMap::set(Ref<NSObject> key, Ref<NSObject> value) {
    if (!key) {
        NSLog("An entry without a key is ignored; members of a set and keys of a dictionary must not be null\n");
        return;
    }
    const size_t hash = key->hash();
    const size_t entry = findIndex(*key, hash);
    if (entry != kNone) {
        entries_[entry].value = std::move(value);
        return;
    }
    entries_.push_back({std::move(key), std::move(value), hash});
    // Keeps the index at most half full, so that probing ends soon.
    if (entries_.size() <= kScannedMax) return;
    if (index_.size() < entries_.size() * 2)
        rebuildIndex();
    else
        enterIndex(entries_.size() - 1);
}

void ObjectMap::setAll(const ObjectMap& other) {
    for (const Entry& entry : other.entries_) set(entry.key, entry.value);
}

bool ObjectMap::remove(const NSObject& key) {
    const size_t entry = findIndex(key, key.hash());
    if (entry == kNone) return false;
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(entry));
    rebuildIndex();
    return true;
}

}  // namespace qz
