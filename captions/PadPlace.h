#pragma once

#include <optional>
#include <string_view>

#include "captions/CuePlacement.h"

namespace qz {

/// The number-pad place, from 1 at the lower left to 9, of "an8" or the older "a6".
std::optional<int> padPlace(std::string_view override);

/// The place for a number of the older kind: 1 to 3 at the bottom, plus 4 at the top, plus 8 in the middle.
std::optional<int> padPlaceOfOld(int number);

/// The alignment and the row of a place from 1 to 9.
CuePlacement placementOfPad(int padPlace);

}  // namespace qz
