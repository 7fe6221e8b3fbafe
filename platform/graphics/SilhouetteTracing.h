#pragma once

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// The border of the area that a mask covers by half or more, in pixels from the top left corner of its box, y
/// downward.
///
/// Closed lines through the points where coverage, interpolated between pixel centres, crosses one half (marching
/// squares), so that a smooth edge gives a smooth border. The covered area is on the same side of all lines, so holes
/// stay holes when filled by the non-zero rule.
NSBezierPath silhouetteOf(const CoverageMask& mask);

}  // namespace qz
