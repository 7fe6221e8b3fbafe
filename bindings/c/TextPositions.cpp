#include "bindings/c/TextPositions.h"

#include <unicode/utf8.h>

namespace qz::c {

std::optional<TextPositions> TextPositions::of(std::string_view utf8, size_t* malformed) {
    TextPositions positions;
    positions.unitAtByte_.assign(utf8.size() + 1, kWithinCharacter);
    const auto* const bytes = reinterpret_cast<const uint8_t*>(utf8.data());
    for (size_t i = 0; i < utf8.size();) {
        const size_t start = i;
        UChar32 character = 0;
        U8_NEXT(bytes, i, utf8.size(), character);
        if (character < 0) {
            *malformed = start;
            return {};
        }
        positions.unitAtByte_[start] = static_cast<uint32_t>(positions.byteAtUnit_.size());
        positions.byteAtUnit_.insert(positions.byteAtUnit_.end(), character > 0xFFFF ? 2 : 1, start);
    }
    positions.unitAtByte_[utf8.size()] = static_cast<uint32_t>(positions.byteAtUnit_.size());
    positions.byteAtUnit_.push_back(utf8.size());
    return positions;
}

std::optional<Range> TextPositions::rangeOf(Bytes bytes) const {
    const size_t size = unitAtByte_.size() - 1;
    if (bytes.start > size || bytes.length > size - bytes.start) return {};
    const uint32_t start = unitAtByte_[bytes.start];
    const uint32_t end = unitAtByte_[bytes.start + bytes.length];
    if (start == kWithinCharacter || end == kWithinCharacter) return {};
    return Range{start, end - start};
}

TextPositions::Bytes TextPositions::bytesOf(Range range) const {
    const size_t start = byteAtUnit_[range.location];
    auto end = static_cast<size_t>(range.end());
    // Skip the second half of a surrogate pair.
    if (end > range.location && end + 1 < byteAtUnit_.size() && byteAtUnit_[end] == byteAtUnit_[end - 1]) ++end;
    return {start, byteAtUnit_[end] - start};
}

}  // namespace qz::c
