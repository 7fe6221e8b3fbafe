#pragma once

#include <string>
#include <unordered_map>

#include "platform/text/Shaping.h"

namespace qz {

/// Caches the glyphs of short items, so that text that stays while other text changes, such as a title beside a clock,
/// is shaped once. Keyed by everything that the glyphs depend on: characters, context, font, size, script, direction,
/// language, ligatures. For one thread at a time.
class ShapingCache {
public:
    /// As `qz::shape`.
    std::vector<ShapedGlyph> shape(const ShapingItem& item);

    uint64_t hits() const { return hits_; }

    static constexpr uint32_t kItemUnitsMax = 256;  ///< longer items are not cached
    static constexpr size_t kUnitsMax = 1 << 15;    ///< total length of all keys, beyond which the cache is emptied

private:
    struct Entry {
        Ref<NSFont> font;                 ///< keeps the face, whose address is part of the key
        std::vector<ShapedGlyph> glyphs;  ///< clusters counted from the start of the item
    };

    void setKey(const ShapingItem& item);

    std::unordered_map<std::u16string, Entry> entries_;
    std::u16string key_;
    size_t unitsHeld_ = 0;
    uint64_t hits_ = 0;
};

}  // namespace qz
