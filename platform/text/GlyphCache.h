#pragma once

#include <memory>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

struct GlyphImage;
struct GlyphKey;

/// Caches the coverage of glyphs and pictures of colour glyphs between drawings, since titles repeat letters, and
/// frames repeat titles. Bounded in bytes; the least recently used images are dropped first.
///
/// Every layout manager starts with its own cache; layout managers on the same thread may share one. Do not use a cache
/// from two threads at once.
class GlyphCache final : public NSObject {
public:
    /// Counters since the cache was made, and its current contents.
    struct Statistics {
        uint64_t hits = 0;    ///< images found
        uint64_t misses = 0;  ///< images not found
        uint64_t evictions =
            0;  ///< images dropped to make room, excluding those dropped by `removeAll` or a smaller bound
        uint64_t images = 0;  ///< images in the cache
        uint64_t bytes = 0;   ///< memory of the images, including overhead
    };

    /// The default bound in bytes.
    static constexpr uint64_t kBytesMaxDefault = Limits::kGlyphCacheBytes;

    /// Empty.
    static Ref<GlyphCache> init();
    ~GlyphCache() override;

    /// The bound in bytes; a smaller one takes effect at once, and 0 keeps nothing. The bound changes pixels by at most
    /// 2 of 255 per channel, since a layer made of cached parts is rounded once more.
    ///@{
    uint64_t bytesMax() const;
    void setBytesMax(uint64_t bytes);
    ///@}
    /// The cache's live statistics, which change as it is used.
    const Statistics& statistics() const;
    /// Frees every image; keeps the bound and the counters.
    void removeAll();

    // For drawing glyphs.

    /// Returns the image, which is valid until one is added or removed; if there is none, counts a miss and returns
    /// null.
    const GlyphImage* find(const GlyphKey& key);
    /// Adds an image that is not in the cache yet, unless it takes more than a sixteenth of the bound.
    void add(const GlyphKey& key, GlyphImage image);
    /// Whether an image of this size would be kept.
    bool hasRoomFor(uint64_t bytes) const;

    std::string className() const override { return "GlyphCache"; }

private:
    GlyphCache();

    struct Store;
    const std::unique_ptr<Store> store_;
};

}  // namespace qz
