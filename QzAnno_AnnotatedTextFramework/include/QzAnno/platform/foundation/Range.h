#pragma once

#include <cstdint>

namespace qz {

/// A stretch of text: `location` and `length` in UTF-16 units.
struct Range {
    uint32_t location = 0;  ///< of the first unit, from 0
    uint32_t length = 0;    ///< in units; may be 0

    /// The position after the last one. 64 bits wide, since location + length may pass 2^32.
    uint64_t end() const { return uint64_t{location} + length; }
    /// Whether the unit at the index is within; an empty range contains none.
    bool contains(uint32_t index) const { return index >= location && index < end(); }

    friend bool operator==(const Range&, const Range&) = default;
};

/// The overlap of two ranges; (0, 0) when they have none.
inline Range intersection(Range a, Range b) {
    const uint32_t location = a.location > b.location ? a.location : b.location;
    const uint64_t end = a.end() < b.end() ? a.end() : b.end();
    return end > location ? Range{location, static_cast<uint32_t>(end - location)} : Range{};
}

}  // namespace qz
