#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "platform/text/Shaping.h"
#include "platform/text/ShapingCache.h"
#include "platform/text/TextBreaker.h"

namespace qz {

// Positions in this file count UTF-16 units from the start of the paragraph.

/// A stretch of one font, kerning and baseline offset, which begins at the end of the previous one.
struct StyleRun {
    uint32_t end = 0;
    Ref<NSFont> font;
    float kern = 0;            ///< points added after each cluster
    float baselineOffset = 0;  ///< points upward
    std::string language;      ///< BCP 47, or empty
    friend bool operator==(const StyleRun&, const StyleRun&) = default;
};

/// A stretch of one font, script and direction, shaped on first use.
struct TextItem {
    uint32_t start = 0;
    uint32_t end = 0;
    Ref<NSFont> font;
    uint32_t script = 0;
    std::string language;
    uint8_t level = 0;       ///< bidi embedding level
    bool isControl = false;  ///< tabs, line ends, controls: one `NSControlGlyph` per cluster, never shaped
    bool isShaped = false;
    std::vector<ShapedGlyph> glyphs;
};

/// The analysis of one paragraph before line breaking: cluster starts and break opportunities, its styles, and its
/// shaped items. Independent of the paragraph's place and the width of lines.
class Paragraph {
public:
    explicit Paragraph(uint32_t length) : length_(length) {}

    uint32_t length() const { return length_; }
    /// Analyses everything except the glyphs, once. `location` is the paragraph's start in `text`. The cache must
    /// outlive the paragraph.
    void analyse(const NSAttributedString& text, uint32_t location, ShapingCache& shapingCache);

    /// Flags of `TextBreak`, one entry per unit.
    const std::vector<uint8_t>& breaks() const { return breaks_; }
    const std::vector<StyleRun>& styles() const { return styles_; }
    const std::vector<TextItem>& items() const { return items_; }
    const NSParagraphStyle::Values& style() const { return style_; }
    bool isRightToLeft() const { return baseLevel_ & 1; }
    uint8_t baseLevel() const { return baseLevel_; }

    size_t itemIndexAt(uint32_t position) const;
    size_t styleIndexAt(uint32_t position) const;
    uint32_t clusterEnd(uint32_t start) const;

    /// The glyphs of an item, shaped in the context of the whole paragraph. `paragraph` is the paragraph's characters.
    const std::vector<ShapedGlyph>& glyphsOfItem(size_t item, std::u16string_view paragraph);
    /// The glyphs of part of an item, shaped as if lines broke at its ends. Optional ligatures never hide a change of
    /// attributes, and are not formed in letter-spaced text.
    std::vector<ShapedGlyph> shapePart(size_t item, std::u16string_view paragraph, Range part) const;
    /// The input for `shape` with the item's properties, for text outside the paragraph.
    ShapingItem shapingItem(size_t item, std::u16string_view text, Range range) const;

private:
    void findStyles(const NSAttributedString& text, uint32_t location);
    void itemize(std::u16string_view paragraph);
    /// Merges clusters that a font makes of the parts of a grapheme cluster, such as the letters of a conjunct.
    void joinGraphemes(std::vector<ShapedGlyph>& glyphs, bool isRightToLeft) const;
    std::vector<Range> spacedRanges(Range part) const;
    /// The ranges to exclude from ligatures, so that no run of attributes begins inside one.
    std::vector<Range> hiddenStyleStarts(const std::vector<ShapedGlyph>& glyphs, Range part) const;

    uint32_t length_;
    ShapingCache* shapingCache_ = nullptr;
    bool isAnalysed_ = false;
    uint8_t baseLevel_ = 0;
    NSParagraphStyle::Values style_;
    std::vector<uint8_t> breaks_;
    std::vector<StyleRun> styles_;
    /// The starts of attribute runs, including those that do not change the font.
    std::vector<uint32_t> attributeStarts_;
    std::vector<TextItem> items_;
};

/// The bidi embedding levels of a paragraph's units. `baseLevel` receives the paragraph's own level.
std::vector<uint8_t> bidiLevels(std::u16string_view paragraph, NSWritingDirection baseDirection, uint8_t& baseLevel);
/// Indices of runs with the given levels, in visual order from left to right.
std::vector<size_t> visualOrder(const std::vector<uint8_t>& levels);

}  // namespace qz
