#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz::c {

/// Positions in a text as the interface counts them, in bytes of its UTF-8, against those of the library, in UTF-16
/// units.
class TextPositions {
public:
    /// None for what is no UTF-8, with the offset of its first wrong byte in `malformed`.
    static std::optional<TextPositions> of(std::string_view utf8, size_t* malformed);

    struct Bytes {
        size_t start = 0;
        size_t length = 0;
    };

    /// None for a stretch that reaches beyond the text or begins or ends within a character.
    std::optional<Range> rangeOf(Bytes bytes) const;
    /// A range within the text; half of a surrogate pair counts as the whole.
    Bytes bytesOf(Range range) const;

private:
    static constexpr uint32_t kWithinCharacter = UINT32_MAX;

    // One entry more than there are bytes, and units.
    std::vector<uint32_t> unitAtByte_;
    std::vector<size_t> byteAtUnit_;
};

}  // namespace qz::c
