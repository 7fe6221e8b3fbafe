#include "platform/text/GlyphCache.h"

#include <unordered_map>

#include "platform/text/GlyphImage.h"

namespace qz {
namespace {

// What an entry takes besides its pixels: its key, itself, the links.
constexpr uint64_t kBytesPerEntry = sizeof(GlyphKey) + sizeof(GlyphImage) + 80;
// An image is kept only when this many of its size would fit.
constexpr uint64_t kImagesMin = 16;

uint64_t bytesKeptFor(const GlyphImage& image) {
    return image.bytes() + kBytesPerEntry;
}

}  // namespace

struct GlyphCache::Store {
    /// In a ring in the order of use; the map keeps keys and entries where they are.
    struct Entry {
        GlyphImage image;
        const GlyphKey* key = nullptr;
        Entry* newer = this;
        Entry* older = this;

        void unlink() {
            newer->older = older;
            older->newer = newer;
        }
        void linkBelow(Entry& end) {
            newer = &end;
            older = end.older;
            older->newer = this;
            end.older = this;
        }
    };

    std::unordered_map<GlyphKey, Entry, GlyphKeyHash> entries;
    /// Closes the ring: below it is the entry that was used last, above it the one used longest ago.
    Entry end;
    uint64_t bytesMax = kBytesMaxDefault;
    Statistics statistics;

    void removeLast() {
        Entry& last = *end.newer;
        statistics.bytes -= bytesKeptFor(last.image);
        --statistics.images;
        last.unlink();
        entries.erase(entries.find(*last.key));
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
    while (store_->statistics.bytes > bytes) store_->removeLast();
}

const GlyphCache::Statistics& GlyphCache::statistics() const {
    return store_->statistics;
}

void GlyphCache::removeAll() {
    while (store_->statistics.images > 0) store_->removeLast();
}

const GlyphImage* GlyphCache::find(const GlyphKey& key) {
    const auto found = store_->entries.find(key);
    if (found == store_->entries.end()) {
        ++store_->statistics.misses;
        return nullptr;
    }
    ++store_->statistics.hits;
    Store::Entry& entry = found->second;
    entry.unlink();
    entry.linkBelow(store_->end);
    return &entry.image;
}

bool GlyphCache::hasRoomFor(uint64_t bytes) const {
    return bytes + kBytesPerEntry <= store_->bytesMax / kImagesMin;
}

void GlyphCache::add(const GlyphKey& key, GlyphImage image) {
    if (!hasRoomFor(image.bytes())) return;
    const uint64_t bytes = bytesKeptFor(image);
    while (store_->statistics.bytes + bytes > store_->bytesMax) {
        store_->removeLast();
        ++store_->statistics.evictions;
    }
    const auto added = store_->entries.try_emplace(key).first;
    added->second.image = std::move(image);
    added->second.key = &added->first;
    added->second.linkBelow(store_->end);
    store_->statistics.bytes += bytes;
    ++store_->statistics.images;
}

}  // namespace qz
