#pragma once

#include <optional>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz::tool {

/// Where the top of a box comes to on a screen whose origin is its top left corner, so that the box covers none of the
/// others: where it is, if that is free, else straight towards the middle of the screen, else the other way (as WebVTT
/// has it for captions that are shown together). None when there is no room.
std::optional<float> freeTop(const NSRect& box, const std::vector<NSRect>& others, NSSize screen);

}  // namespace qz::tool
