#pragma once

#include <optional>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz::tool {

/// The top of a box on a screen, whose origin is the top left, such that the box does not overlap the others: its own
/// place if free, else moved towards the middle of the screen, else the other way (as in WebVTT for simultaneous
/// captions). No value if there is no room.
std::optional<float> freeTop(const NSRect& box, const std::vector<NSRect>& others, NSSize screen);

}  // namespace qz::tool
