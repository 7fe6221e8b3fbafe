#include "platform/text/GlyphCache.h"

#include <algorithm>
#include <memory_resource>
#include <unordered_map>
#include <vector>

#include "platform/text/GlyphImage.h"
#include "platform/text/SmallBlockPool.h"

namespace qz {
namespace {

// The overhead of an entry besides its pixels: its key, itself, its links in the map.
constexpr uint64_t kBytesPerEntry = sizeof(GlyphKey) + sizeof(GlyphImage) + 64;
// Number of pairs of shortcuts to the entries of a title or page, which each frame looks up again; a power of two. With
// single shortcuts, one in six on a page would collide.
constexpr size_t kShortcuts = 2048;
// An image is kept only if this many of its size would fit.
constexpr uint64_t kImagesMin = 16;

uint64_t bytesKeptFor(const GlyphImage& image) {
    return image.bytes() + kBytesPerEntry;
}

}  // namespace

struct GlyphCache::Store {
    struct Entry {
        // The store's clock at the last use. A list in order of use would touch two neighbours at every hit.
        uint64_t lastUsed = 0;
        GlyphImage image;
    };
    using Entries = std::pmr::unordered_map<GlyphKey, Entry, GlyphKeyHash>;

    // Contiguous in the order of creation, which is also the order in which the next frame looks them up.
    SmallBlockPool pool;
    Entries entries{&pool};
    // Indexed by hash: a lookup in the map goes through another entry, which costs another memory access.
    struct Shortcut {
        Entries::value_type* latest = nullptr;
        Entries::value_type* other = nullptr;
    };
    std::vector<Shortcut> shortcuts = std::vector<Shortcut>(kShortcuts);
    uint64_t clock = 0;
    uint64_t bytesMax = kBytesMaxDefault;
    Statistics statistics;

    Entry* find(const GlyphKey& key) {
        Shortcut& shortcut = shortcuts[GlyphKeyHash{}(key) % kShortcuts];
        for (Entries::value_type* const entry : {shortcut.latest, shortcut.other})
            if (entry && entry->first == key) return &entry->second;
        const auto found = entries.find(key);
        if (found == entries.end()) return nullptr;
        shortcut = {.latest = &*found, .other = shortcut.latest};
        return &found->second;
    }

    void remove(Entries::iterator entry) {
        Shortcut& shortcut = shortcuts[GlyphKeyHash{}(entry->first) % kShortcuts];
        for (Entries::value_type** const way : {&shortcut.latest, &shortcut.other})
            if (*way == &*entry) *way = nullptr;
        statistics.bytes -= bytesKeptFor(entry->second.image);
        --statistics.images;
        entries.erase(entry);
    }

    /// Removes the least recently used images until at most `bytes` are kept. Returns the number removed.
    uint64_t shrinkTo(uint64_t bytes) {
        if (statistics.bytes <= bytes) return 0;
        std::vector<Entries::iterator> oldestFirst;
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) oldestFirst.push_back(entry);
        std::ranges::sort(oldestFirst, {}, [](const auto& entry) { return entry->second.lastUsed; });
        uint64_t removed = 0;
        for (; statistics.bytes > bytes; ++removed) remove(oldestFirst[removed]);
        return removed;
    }
};

GlyphCache::GlyphCache() : store_(std::make_unique<Store>()) {}
GlyphCache::~GlyphCache() = default;

Ref<GlyphCache> GlyphCache::init() {
    return Ref<GlyphCache>(new GlyphCache);
}

uint64_t GlyphCache::bytesMax() const {
    return store_->bytesMax;
}

void GlyphCache::setBytesMax(uint64_t bytes) {
    store_->bytesMax = bytes;
    store_->shrinkTo(bytes);
}

const GlyphCache::Statistics& GlyphCache::statistics() const {
    return store_->statistics;
}

void GlyphCache::removeAll() {
    store_->shrinkTo(0);
}

const GlyphImage* GlyphCache::find(const GlyphKey& key) {
    Store::Entry* const found = store_->find(key);
    if (!found) {
        ++store_->statistics.misses;
        return nullptr;
    }
    ++store_->statistics.hits;
    found->lastUsed = ++store_->clock;
    return &found->image;
}

bool GlyphCache::hasRoomFor(uint64_t bytes) const {
    return bytes + kBytesPerEntry <= store_->bytesMax / kImagesMin;
}

void GlyphCache::add(const GlyphKey& key, GlyphImage image) {
    if (!hasRoomFor(image.bytes())) return;
    const uint64_t bytes = bytesKeptFor(image);
    // An eighth at a time, since finding what to remove scans all entries.
    if (store_->statistics.bytes + bytes > store_->bytesMax) {
        store_->statistics.evictions += store_->shrinkTo(store_->bytesMax - store_->bytesMax / 8);
    }
    store_->entries.try_emplace(key, Store::Entry{++store_->clock, std::move(image)});
    store_->statistics.bytes += bytes;
    ++store_->statistics.images;
}

}  // namespace qz
