#pragma once

#include <optional>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "platform/text/CaretCell.h"

namespace qz {

/// A caret position. Where directions or lines meet, one position in the text is two on the screen: after the character
/// before `index`, and before the one at `index`.
struct CaretPlace {
    uint32_t index = 0;
    bool isBehindCharacter = false;
    friend bool operator==(const CaretPlace&, const CaretPlace&) = default;
};

/// A line for the purposes of carets and selections.
struct CaretLine {
    /// Includes the line end.
    Range characters;
    /// The position after the last cluster, before the line end if there is one.
    uint32_t textEnd = 0;
    NSRect rect;
    /// Whether the text continues in the next line, so that `textEnd` is also its start.
    bool isWrapped = false;
    /// The direction of the paragraph.
    bool isRightToLeft = false;
    /// In text order, without the line end.
    std::vector<CaretCell> cells;

    float xOfCaret(CaretPlace place) const;
    /// The place nearest to `x`.
    CaretPlace placeAtX(float x) const;
    /// The place one cluster to the right (left) of this one; no value at the end of the line.
    std::optional<CaretPlace> placeBeside(CaretPlace place, bool toRight) const;
    /// The place at the right (left) end.
    CaretPlace outermostPlace(bool atRight) const;

private:
    const CaretCell* cellAt(CaretPlace place) const;
    std::vector<const CaretCell*> cellsFromLeft() const;
};

/// The lines laid out in the container, including the empty line at the end of the text; no lines for an empty text.
std::vector<CaretLine> caretLines(const NSLayoutManager& layoutManager, const NSTextContainer& container);

/// The line that shows the place. `lines` must not be empty.
size_t lineOfCaret(const std::vector<CaretLine>& lines, CaretPlace place);
/// The line at a height, or the nearest one. `lines` must not be empty.
size_t lineAtY(const std::vector<CaretLine>& lines, float y);

/// The rectangles of a selection, merged over adjacent clusters; with mixed directions a line may have several.
std::vector<NSRect> selectionRects(const std::vector<CaretLine>& lines, Range selection);

}  // namespace qz
