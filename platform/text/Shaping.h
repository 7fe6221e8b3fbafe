#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// A stretch of one font, script, direction and language, with the text around it, which shaping looks at for joins.
struct ShapingItem {
    std::u16string_view text;
    Range range;
    Ref<NSFont> font;
    /// ISO 15924 as a tag of four characters, such as 'Arab'; 0 lets the text decide.
    uint32_t script = 0;
    bool isRightToLeft = false;
    /// A BCP 47 tag or empty. The locale of the process has no say in either case.
    std::string language;
    /// Whether the font's optional ligatures may be formed; text with extra space between its letters wants none. Those
    /// that a script cannot do without are formed in any case.
    bool allowsLigatures = true;
    /// Stretches whose characters take part in no optional ligature even so.
    std::vector<Range> withoutLigatures = {};
};

/// One glyph, in points. Offsets move the glyph from the pen, x to the right and y upward, and do not move the pen.
struct ShapedGlyph {
    NSGlyph glyph = 0;
    /// The first UTF-16 unit of the characters that the glyph stands for, counted from the start of the item's `text`.
    uint32_t cluster = 0;
    float advance = 0;
    float offsetX = 0;
    float offsetY = 0;
    /// A line that begins at this glyph's cluster must be shaped anew.
    bool isUnsafeToBreak = false;
};

/// Shapes an item. The glyphs come in the order of the text: clusters never decrease, whatever the direction; within a
/// cluster they come in drawing order. Half a surrogate pair is shaped as U+FFFD; controls, tabs, line and paragraph
/// separators show nothing and take no room. Time may grow faster than the text, so an item is bounded: one longer than
/// `kShapingUnitsMax`, or with a range beyond its text, is the caller's fault; it is reported as a failed assertion and
/// yields no glyphs. May be used from several threads.
std::vector<ShapedGlyph> shape(const ShapingItem& item);

inline constexpr uint32_t kShapingUnitsMax = 4096;
/// How much text on either side of an item its shape may depend on: more than the five characters that HarfBuzz looks
/// at.
inline constexpr uint32_t kShapingContextUnits = 16;

}  // namespace qz
