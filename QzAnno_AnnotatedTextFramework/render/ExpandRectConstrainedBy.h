#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

/// Grows a rectangle by whole points on each side and cuts the result to a screen whose origin is (0, 0). `offset`, if
/// given, receives the position of the original rectangle's corner inside the result. Logs a line on every call.
NSRect ExpandRectConstrainedBy(const NSRect& rect, int32_t left, int32_t right, int32_t top, int32_t bottom,
                               NSSize screen, NSPoint* offset = nullptr);

}  // namespace qz
