#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/text/LinePen.h"
#include "platform/text/Paragraph.h"

namespace qz {

/// One glyph of a line, in text order; positions count from the start of the paragraph.
struct LineGlyph {
    NSGlyph glyph = 0;
    uint32_t cluster = 0;
    float advance = 0;
    float offsetX = 0;
    float offsetY = 0;
    uint8_t level = 0;
    bool hangs = false;  ///< white space at the end of the line, which takes no room and is not shown
};

/// The text of one line.
struct LineContent {
    uint32_t start = 0;
    uint32_t end = 0;
    /// Whether the text would continue on the same line if there were room.
    bool isWrapped = false;
    /// In points, without hanging white space.
    double width = 0;
    std::vector<LineGlyph> glyphs;
};

/// The height of a line, in points: the greatest extents of its fonts, shifted by baseline offsets, times the paragraph
/// style's multiple, clamped to its limits. The multiple and limits change the height at the top.
struct LineMetrics {
    float height = 0;
    /// From the top of the line to its baseline.
    float baseline = 0;
};

/// The room for the text of a line, without padding and indents.
struct LineSpan {
    double left = 0;  ///< points from the left edge of the line's fragment
    double width = 0;
    /// Whether the line has no far end to align text to; text then starts at the left.
    bool isUnbounded = false;
};

/// Fragments at least this wide count as unbounded.
inline constexpr float kUnboundedLength = 1e7f;

/// Breaks a paragraph into lines greedily.
class LineFiller {
public:
    /// `text` is the paragraph's characters.
    LineFiller(Paragraph& paragraph, std::u16string_view text) : paragraph_(paragraph), text_(text) {}

    /// The room for the line that begins at `start`, in a fragment of this width with `padding` points at each end.
    LineSpan span(uint32_t start, float fragmentWidth, float padding) const;
    /// The line that begins at `start`: as much as fits in `available` points, but at least one cluster.
    LineContent fill(uint32_t start, double available);
    /// The glyphs of a stretch set as one line.
    LineContent content(uint32_t start, uint32_t end, bool isWrapped);

    LineMetrics metrics(uint32_t start, uint32_t end) const;

private:
    struct Overflow {
        uint32_t lineEnd;     ///< the mandatory end of the line if everything fits
        uint32_t clusterEnd;  ///< the end of the first cluster that does not fit; 0 if all fit
    };

    Overflow findOverflow(uint32_t start, double available);
    uint32_t firstScanEnd(size_t item, uint32_t from);
    /// Adds up clusters of an item until one ends beyond `lineEnd`, measured by the pen; no value if all fit.
    std::optional<Overflow> scan(const std::vector<LineGlyph>& glyphs, uint32_t end, uint32_t lineStart, double lineEnd,
                                 LinePen& pen) const;
    double headIndent(uint32_t start) const;
    LinePen penAt(uint32_t start) const { return {paragraph_.style(), headIndent(start)}; }
    bool isDecimalPoint(uint32_t position) const;
    uint32_t clusterStartFrom(uint64_t position, uint32_t end) const;
    void appendItem(std::vector<LineGlyph>& glyphs, size_t item, uint32_t start, uint32_t end);
    void addKern(std::vector<LineGlyph>& glyphs, size_t firstGlyph) const;
    void setTabs(LineContent& content) const;
    void showHyphen(LineContent& content) const;
    void hangWhiteSpace(LineContent& content) const;
    bool isHangingCluster(uint32_t start, uint32_t end) const;

    Paragraph& paragraph_;
    const std::u16string_view text_;
};

/// Adds space after a cluster, glyphs [first, last), which is to its left in a right-to-left run.
void addSpaceBehind(std::vector<LineGlyph>& glyphs, size_t first, size_t last, float space);
/// The glyph after the last one of the cluster that begins at glyph `first`.
size_t endOfCluster(const std::vector<LineGlyph>& glyphs, size_t first);

}  // namespace qz
