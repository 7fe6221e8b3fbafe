#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "platform/text/LineFiller.h"

namespace qz {

/// A glyph with its place.
struct PlacedGlyph {
    NSGlyph glyph = 0;
    uint32_t character = 0;  ///< the first character of its cluster, counted from the start of the text
    NSPoint location;        ///< of its origin, from the origin of the line fragment
    float pen = 0;           ///< where its advance begins, x from the origin of the line fragment
    float advance = 0;
    bool isNotShown = false;
    bool isRightToLeft = false;
};

/// Where a line has been granted room, container coordinates.
struct LineRoom {
    NSRect fragment;
    /// Points kept free at either end.
    float padding = 0;
    LineSpan span;
};

/// The text of a line at its place.
struct PlacedLine {
    std::vector<PlacedGlyph> glyphs;  ///< in the order of the text
    NSRect usedRect;
};

/// Brings the runs of a line into visual order, aligns and justifies them. `location` is where the paragraph begins in
/// the text.
PlacedLine placeLine(LineContent content, const Paragraph& paragraph, std::u16string_view paragraphText,
                     uint32_t location, const LineMetrics& metrics, const LineRoom& room);

}  // namespace qz
