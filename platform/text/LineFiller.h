#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/text/LinePen.h"
#include "platform/text/Paragraph.h"

namespace qz {

/// One glyph of a line, in the order of the text; positions count from the start of the paragraph.
struct LineGlyph {
    NSGlyph glyph = 0;
    uint32_t cluster = 0;
    float advance = 0;
    float offsetX = 0;
    float offsetY = 0;
    uint8_t level = 0;
    bool hangs = false;  ///< white space at the end of the line: takes no room and is not shown
};

/// The text that one line takes.
struct LineContent {
    uint32_t start = 0;
    uint32_t end = 0;
    /// Whether the text would go on in the same line, were there room.
    bool isWrapped = false;
    /// Points, without what hangs.
    double width = 0;
    std::vector<LineGlyph> glyphs;
};

/// Height of a line, in points: the greatest extents of its fonts, raised and lowered as baseline offsets ask, times
/// the multiple of the paragraph style, then held within its limits. What these add or take is added or taken at the
/// top.
struct LineMetrics {
    float height = 0;
    /// From the top of the line to its baseline.
    float baseline = 0;
};

/// Where the text of a line may stand, padding and indents taken off.
struct LineSpan {
    double left = 0;  ///< points from the left edge of the line's fragment
    double width = 0;
    /// Whether the line has no far end; then text cannot be aligned to it, and starts at the left.
    bool isUnbounded = false;
};

/// A width from which on a fragment has no far end.
inline constexpr float kUnboundedLength = 1e7f;

/// Cuts a paragraph into lines, greedily.
class LineFiller {
public:
    /// `text` is the paragraph's characters.
    LineFiller(Paragraph& paragraph, std::u16string_view text) : paragraph_(paragraph), text_(text) {}

    /// The room for the line that begins at `start`, in a fragment of this width with free points at either end.
    LineSpan span(uint32_t start, float fragmentWidth, float padding) const;
    /// The line that begins at `start`: as much as fits `available` points, at least one cluster.
    LineContent fill(uint32_t start, double available);
    /// The glyphs of a stretch that is a line of its own.
    LineContent content(uint32_t start, uint32_t end, bool isWrapped);

    LineMetrics metrics(uint32_t start, uint32_t end) const;

private:
    struct Overflow {
        uint32_t lineEnd;     ///< where the line has to end when all up to there fits
        uint32_t clusterEnd;  ///< the end of the first cluster that does not fit; 0 when all fit
    };

    Overflow findOverflow(uint32_t start, double available);
    uint32_t firstScanEnd(size_t item, uint32_t from);
    /// Adds up clusters of an item until one ends behind `lineEnd`, measured as the pen does; none when all fit.
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

/// Adds room behind a cluster, glyphs [first, last): in a right-to-left run that is to the left of it.
void addSpaceBehind(std::vector<LineGlyph>& glyphs, size_t first, size_t last, float space);
/// The glyph after the last one of the cluster that begins at glyph `first`.
size_t endOfCluster(const std::vector<LineGlyph>& glyphs, size_t first);

}  // namespace qz
