#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qz {

/// Flags for a UTF-16 unit of a paragraph.
namespace TextBreak {
inline constexpr uint8_t clusterStart = 1;   ///< a grapheme cluster begins here
inline constexpr uint8_t lineMayBegin = 2;   ///< a line may begin here
inline constexpr uint8_t lineMustBegin = 4;  ///< mandatory break before this unit
inline constexpr uint8_t hangs = 8;          ///< white space that may hang at the end of a line, except no-break spaces
}  // namespace TextBreak

/// Finds grapheme clusters and line break opportunities by Unicode's rules, independent of the process's locale:
/// between dictionary words in Thai, Lao, Khmer and Burmese, and by the strict rules in Japanese, where no line begins
/// with a small kana. Korean words, which are separated by blanks, are kept whole. May be used from several threads.
class TextBreaker {
public:
    /// Flags for every unit of a paragraph. A line never begins within a cluster.
    static std::vector<uint8_t> breaksInParagraph(std::u16string_view paragraph);
    /// Flags that tell only where clusters begin.
    static std::vector<uint8_t> clustersInText(std::u16string_view text);

    /// Longer clusters (piled-up marks) are split, so that work per cluster is bounded.
    static constexpr uint32_t kClusterUnitsMax = 512;
};

}  // namespace qz
