#pragma once

#include "platform/foundation/Range.h"

namespace qz {

/// The room of one grapheme cluster in a line; x in container coordinates. White space that hangs at a line's end has
/// none.
struct CaretCell {
    Range characters;
    float left = 0;
    float right = 0;
    bool isRightToLeft = false;
};

}  // namespace qz
