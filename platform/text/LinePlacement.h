#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "platform/text/LineFiller.h"

namespace qz {

/// A glyph with its place.
struct PlacedGlyph {
    NSGlyph glyph = 0;
    uint32_t character = 0;  ///< the first character of its cluster, counted from the start of the text
    NSPoint location;        ///< its origin, relative to the line fragment's
    float pen = 0;           ///< the start of its advance, x relative to the line fragment's origin
    float advance = 0;
    bool isNotShown = false;
    bool isRightToLeft = false;
};

/// The room granted to a line, in container coordinates.
struct LineRoom {
    NSRect fragment;
    /// Free points at each end.
    float padding = 0;
    LineSpan span;
};

/// The placed text of a line.
struct PlacedLine {
    std::vector<PlacedGlyph> glyphs;  ///< in text order
    NSRect usedRect;
};

/// Puts the runs of a line into visual order, aligns and justifies them. `location` is the paragraph's start in the
/// text.
PlacedLine placeLine(LineContent content, const Paragraph& paragraph, std::u16string_view paragraphText,
                     uint32_t location, const LineMetrics& metrics, const LineRoom& room);

}  // namespace qz
