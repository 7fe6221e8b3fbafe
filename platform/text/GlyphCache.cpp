#include "platform/text/GlyphCache.h"

#include <list>
#include <unordered_map>

#include "platform/text/GlyphImage.h"

namespace qz {
namespace {

// What an entry takes besides its pixels: itself, its key a second time, the links of two containers.
constexpr uint64_t kBytesPerEntry = 2 * sizeof(GlyphKey) + sizeof(GlyphImage) + 96;
// An image is kept only when this many of its size would fit.
constexpr uint64_t kImagesMin = 16;

uint64_t bytesKeptFor(const GlyphImage& image) {
    return image.bytes() + kBytesPerEntry;
}

}  // namespace

struct GlyphCache::Store {
    struct Entry {
        GlyphKey key;
        GlyphImage image;
    };

    /// The last used first.
    std::list<Entry> entries;
    std::unordered_map<GlyphKey, std::list<Entry>::iterator, GlyphKeyHash> byKey;
    uint64_t bytesMax = kBytesMaxDefault;
    Statistics statistics;

    void removeLast() {
        statistics.bytes -= bytesKeptFor(entries.back().image);
        --statistics.images;
        byKey.erase(entries.back().key);
        entries.pop_back();
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
    while (!store_->entries.empty()) store_->removeLast();
}

const GlyphImage* GlyphCache::find(const GlyphKey& key) {
    const auto found = store_->byKey.find(key);
    if (found == store_->byKey.end()) {
        ++store_->statistics.misses;
        return nullptr;
    }
    ++store_->statistics.hits;
    store_->entries.splice(store_->entries.begin(), store_->entries, found->second);
    return &found->second->image;
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
    store_->entries.push_front({key, std::move(image)});
    store_->byKey.emplace(key, store_->entries.begin());
    store_->statistics.bytes += bytes;
    ++store_->statistics.images;
}

}  // namespace qz
