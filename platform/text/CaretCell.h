#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The horizontal extent of one grapheme cluster in a line; x in container coordinates. White space hanging at a line's
/// end has none.
struct CaretCell {
    Range characters;            ///< of the text, never empty
    float left = 0;              ///< x of its left edge, in points
    float right = 0;             ///< x of its right edge; equals `left` for a cluster without extent
    bool isRightToLeft = false;  ///< whether its text begins at the right edge
};

}  // namespace qz
