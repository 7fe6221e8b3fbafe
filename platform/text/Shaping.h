#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// A stretch of one font, script, direction and language, with the surrounding text, which affects joining.
struct ShapingItem {
    std::u16string_view text;
    Range range;
    Ref<NSFont> font;
    /// An ISO 15924 tag of four characters, such as 'Arab'; 0 derives it from the text.
    uint32_t script = 0;
    bool isRightToLeft = false;
    /// A BCP 47 tag or empty. The process's locale has no influence.
    std::string language;
    /// Whether optional ligatures may be formed, which letter-spaced text should not have. Ligatures required by a
    /// script are always formed.
    bool allowsLigatures = true;
    /// Stretches where no optional ligatures are formed even so.
    std::vector<Range> withoutLigatures = {};
};

/// One glyph, in points. Offsets move the glyph from the pen, x to the right and y upward, and do not move the pen.
struct ShapedGlyph {
    NSGlyph glyph = 0;
    /// The first UTF-16 unit of the glyph's characters, counted from the start of the item's `text`.
    uint32_t cluster = 0;
    float advance = 0;
    float offsetX = 0;
    float offsetY = 0;
    /// Whether a line that begins at this glyph's cluster must be reshaped.
    bool isUnsafeToBreak = false;
};

/// Shapes an item. Glyphs are in text order: clusters never decrease, whatever the direction; within a cluster they are
/// in drawing order. Half a surrogate pair is shaped as U+FFFD; controls, tabs, line and paragraph separators show
/// nothing and take no room. Since time may grow faster than the text, an item longer than `kShapingUnitsMax`, or with
/// a range beyond its text, is reported as a failed assertion and yields no glyphs. May be used from several threads.
std::vector<ShapedGlyph> shape(const ShapingItem& item);

inline constexpr uint32_t kShapingUnitsMax = 4096;
/// How much surrounding text an item's shape may depend on: more than the five characters that HarfBuzz uses.
inline constexpr uint32_t kShapingContextUnits = 16;

}  // namespace qz
