#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz::c {

/// Converts positions in a text between the interface's UTF-8 bytes and the library's UTF-16 units.
class TextPositions {
public:
    /// Returns no value, with the offset of the first malformed byte in `malformed`, if the text is not UTF-8.
    static std::optional<TextPositions> of(std::string_view utf8, size_t* malformed);

    struct Bytes {
        size_t start = 0;
        size_t length = 0;
    };

    /// Returns no value if the stretch reaches beyond the text or begins or ends inside a character.
    std::optional<Range> rangeOf(Bytes bytes) const;
    /// The range must lie in the text; half of a surrogate pair counts as the whole.
    Bytes bytesOf(Range range) const;

private:
    static constexpr uint32_t kWithinCharacter = UINT32_MAX;

    // One entry more than there are bytes, or units.
    std::vector<uint32_t> unitAtByte_;
    std::vector<size_t> byteAtUnit_;
};

}  // namespace qz::c
