#pragma once

#include <memory>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSObject.h"

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
    /// What the cache has done since it was made, and what it keeps.
    struct Statistics {
        uint64_t hits = 0;       ///< images that were looked for and found
        uint64_t misses = 0;     ///< images that were looked for in vain
        uint64_t evictions = 0;  ///< images given up to make room, not those that `removeAll` or a smaller bound took
        uint64_t images = 0;     ///< images that are kept now
        uint64_t bytes = 0;      ///< of these, with what it takes to keep them
    };

    /// The bound of a new cache, in bytes.
    static constexpr uint64_t kBytesMaxDefault = Limits::kGlyphCacheBytes;

    /// Empty.
    static Ref<GlyphCache> init();
    ~GlyphCache() override;

    /// The bound in bytes; a smaller one takes effect at once, and 0 keeps nothing. What is drawn at one bound differs
    /// from what is drawn at another by 2 of 255 at most, on any channel: a layer that is made of kept parts is rounded
    /// once more.
    ///@{
    uint64_t bytesMax() const;
    void setBytesMax(uint64_t bytes);
    ///@}
    /// The cache's own, which change as it is used.
    const Statistics& statistics() const;
    /// Frees every image; the bound and the counts of what has been done stay.
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
