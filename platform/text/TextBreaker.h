#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qz {

/// What holds at a UTF-16 unit of a paragraph, as a set of flags.
namespace TextBreak {
inline constexpr uint8_t clusterStart = 1;   ///< a grapheme cluster begins here
inline constexpr uint8_t lineMayBegin = 2;   ///< a line may begin here
inline constexpr uint8_t lineMustBegin = 4;  ///< a line ends before this unit in any case
inline constexpr uint8_t hangs = 8;          ///< white space, which hangs over the end of a line; no no-break space
}  // namespace TextBreak

/// Finds grapheme clusters and places where lines may break, by Unicode's rules, whatever the locale of the process:
/// between words of a dictionary in Thai, Lao, Khmer and Burmese, by the strict rules in Japanese, where no line begins
/// with a small kana. Korean words, which have blanks between them, are kept whole. May be used from several threads.
class TextBreaker {
public:
    /// Flags for every unit of a paragraph. A line never begins within a cluster.
    static std::vector<uint8_t> breaksInParagraph(std::u16string_view paragraph);
    /// Flags that tell only where clusters begin.
    static std::vector<uint8_t> clustersInText(std::u16string_view text);

    /// Longer clusters (piled-up marks) are taken apart, so that what works cluster by cluster stays bounded.
    static constexpr uint32_t kClusterUnitsMax = 512;
};

}  // namespace qz
