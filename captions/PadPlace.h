#pragma once

#include <optional>
#include <string_view>

#include "captions/CuePlacement.h"

namespace qz {

/// The place on the number pad, 1 at the lower left to 9, that "an8", or the older "a6", names.
std::optional<int> padPlace(std::string_view override);

/// The place that a number of the older kind names: 1 to 3 at the foot, 4 more at the top, 8 more in the middle.
std::optional<int> padPlaceOfOld(int number);

/// The alignment and the row of a place from 1 to 9.
CuePlacement placementOfPad(int padPlace);

}  // namespace qz
