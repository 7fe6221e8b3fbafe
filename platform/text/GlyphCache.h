#pragma once

#include <memory>

#include "platform/foundation/Limits.h"
#include "platform/foundation/NSObject.h"

namespace qz {

struct GlyphImage;
struct GlyphKey;

/// What glyphs cover, and pictures of colour glyphs, kept from one drawing to the next: titles repeat letters, and
/// frames repeat titles. Within a bound in bytes; what was used longest ago goes first.
///
/// Every layout manager begins with one of its own; those that work on one thread may share one. Not for use from two
/// threads at once.
class GlyphCache final : public NSObject {
public:
    struct Statistics {
        uint64_t hits = 0;
        uint64_t misses = 0;
        /// Images given up to make room, not those that `removeAll` or a smaller bound took.
        uint64_t evictions = 0;
        /// What is kept now: images, and their bytes with what it takes to keep them.
        uint64_t images = 0;
        uint64_t bytes = 0;
    };

    static constexpr uint64_t kBytesMaxDefault = Limits::kGlyphCacheBytes;

    static Ref<GlyphCache> init();
    ~GlyphCache() override;

    uint64_t bytesMax() const;
    /// 0 keeps nothing. What is drawn at one bound differs from what is drawn at another by 2 of 255 at most, on any
    /// channel: a layer that is made of kept parts is rounded once more.
    void setBytesMax(uint64_t bytes);
    const Statistics& statistics() const;
    void removeAll();

    // For the drawing of glyphs.

    /// The image, which stands until one is added or removed; null, and counted as a miss, when it is not kept.
    const GlyphImage* find(const GlyphKey& key);
    /// Keeps an image that is not kept yet, unless it takes more than a sixteenth of the bound.
    void add(const GlyphKey& key, GlyphImage image);
    /// Whether an image of so many bytes would be kept.
    bool hasRoomFor(uint64_t bytes) const;

    std::string className() const override { return "GlyphCache"; }

private:
    GlyphCache();

    struct Store;
    const std::unique_ptr<Store> store_;
};

}  // namespace qz
