#include "platform/text/ShapingCache.h"

#include <algorithm>
#include <bit>

namespace qz {
namespace {

void append(std::u16string& key, uint64_t value) {
    for (int shift = 0; shift < 64; shift += 16) key += static_cast<char16_t>(value >> shift);
}

void moveClusters(std::vector<ShapedGlyph>& glyphs, uint32_t distance) {
    for (ShapedGlyph& glyph : glyphs) glyph.cluster += distance;
}

}  // namespace

void ShapingCache::setKey(const ShapingItem& item) {
    const size_t start = item.range.location - std::min<size_t>(item.range.location, kShapingContextUnits);
    const size_t end = std::min<size_t>(item.range.end() + kShapingContextUnits, item.text.size());
    key_.clear();
    append(key_, reinterpret_cast<uintptr_t>(&item.font->face()));
    append(key_, uint64_t{std::bit_cast<uint32_t>(item.font->pointSize())} << 32 | item.script);
    // The context's length shows where the text begins or ends.
    append(key_, (item.range.location - start) << 48 | (end - item.range.end()) << 32 |
                     uint64_t{item.range.length} << 2 | uint64_t{item.isRightToLeft} << 1 |
                     uint64_t{item.allowsLigatures});
    for (const Range& range : item.withoutLigatures) {
        append(key_, uint64_t{range.location - item.range.location} << 32 | range.length);
    }
    key_.append(item.language.begin(), item.language.end());
    key_ += u'\0';
    key_.append(item.text.substr(start, end - start));
}

std::vector<ShapedGlyph> ShapingCache::shape(const ShapingItem& item) {
    if (item.range.length > kItemUnitsMax || item.range.end() > item.text.size()) {
        return qz::shape(item);
    }
    setKey(item);
    if (const auto known = entries_.find(key_); known != entries_.end()) {
        ++hits_;
        std::vector<ShapedGlyph> glyphs = known->second.glyphs;
        moveClusters(glyphs, item.range.location);
        return glyphs;
    }
    std::vector<ShapedGlyph> glyphs = qz::shape(item);
    if (unitsHeld_ + key_.size() > kUnitsMax) {
        entries_.clear();
        unitsHeld_ = 0;
    }
    Entry entry{item.font, glyphs};
    moveClusters(entry.glyphs, -item.range.location);
    entries_.emplace(key_, std::move(entry));
    unitsHeld_ += key_.size();
    return glyphs;
}

}  // namespace qz
