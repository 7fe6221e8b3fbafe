#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The room of one grapheme cluster in a line; x in container coordinates. White space that hangs at a line's end has
/// none.
struct CaretCell {
    Range characters;            ///< of the text, never empty
    float left = 0;              ///< x of its left edge, in points
    float right = 0;             ///< x of its right edge; the left one's for a cluster without room
    bool isRightToLeft = false;  ///< whether its text begins at the right edge
};

}  // namespace qz
