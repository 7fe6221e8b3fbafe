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

/// A stretch of one font, kerning and baseline offset, which begins where the one before ends.
struct StyleRun {
    uint32_t end = 0;
    Ref<NSFont> font;
    float kern = 0;            ///< points added behind each cluster
    float baselineOffset = 0;  ///< points upward
    std::string language;      ///< BCP 47, or empty
    friend bool operator==(const StyleRun&, const StyleRun&) = default;
};

/// A stretch of one font, script and direction, shaped when it is first needed.
struct TextItem {
    uint32_t start = 0;
    uint32_t end = 0;
    Ref<NSFont> font;
    uint32_t script = 0;
    std::string language;
    uint8_t level = 0;       ///< bidi embedding level
    bool isControl = false;  ///< tabs, line ends, controls: one `NSControlGlyph` a cluster, never shaped
    bool isShaped = false;
    std::vector<ShapedGlyph> glyphs;
};

/// What is known of one paragraph before it is cut into lines: where clusters begin and lines may, its styles, and its
/// shaped items. Nothing in it depends on where the paragraph stands or how wide lines are.
class Paragraph {
public:
    explicit Paragraph(uint32_t length) : length_(length) {}

    uint32_t length() const { return length_; }
    /// Finds everything but the glyphs, once. `location` is where the paragraph begins in `text`.
    /// The cache must live as long as the paragraph.
    void analyse(const NSAttributedString& text, uint32_t location, ShapingCache& shapingCache);

    /// Of `TextBreak`, one a unit.
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
    /// The glyphs of a part of an item, shaped as if lines broke at its ends. No optional ligature hides the start of
    /// other attributes, and none is formed where letters are spaced.
    std::vector<ShapedGlyph> shapePart(size_t item, std::u16string_view paragraph, Range part) const;
    /// As `shape` has it, with the item's properties; for text that is not the paragraph's.
    ShapingItem shapingItem(size_t item, std::u16string_view text, Range range) const;

private:
    void findStyles(const NSAttributedString& text, uint32_t location);
    void itemize(std::u16string_view paragraph);
    /// A font may give the parts of a grapheme cluster, such as the letters of a conjunct, clusters of their own.
    void joinGraphemes(std::vector<ShapedGlyph>& glyphs, bool isRightToLeft) const;
    std::vector<Range> spacedRanges(Range part) const;
    /// What must stand alone, so that no run of attributes begins within a ligature of these glyphs.
    std::vector<Range> hiddenStyleStarts(const std::vector<ShapedGlyph>& glyphs, Range part) const;

    uint32_t length_;
    ShapingCache* shapingCache_ = nullptr;
    bool isAnalysed_ = false;
    uint8_t baseLevel_ = 0;
    NSParagraphStyle::Values style_;
    std::vector<uint8_t> breaks_;
    std::vector<StyleRun> styles_;
    /// Where runs of attributes begin, those that change no font included.
    std::vector<uint32_t> attributeStarts_;
    std::vector<TextItem> items_;
};

/// The bidi embedding levels of a paragraph's units. `baseLevel` receives the paragraph's own level.
std::vector<uint8_t> bidiLevels(std::u16string_view paragraph, NSWritingDirection baseDirection, uint8_t& baseLevel);
/// Indices of runs with the given levels, in the order in which they stand from left to right.
std::vector<size_t> visualOrder(const std::vector<uint8_t>& levels);

}  // namespace qz
