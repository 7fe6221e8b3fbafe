#pragma once

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// The border of what a mask covers by half or more, in pixels of its box, origin at its top left corner and y
/// downward.
///
/// Closed lines between the places where coverage, taken as steady between the centres of pixels, passes the half
/// (marching squares), so that a smooth edge gives a smooth border. What is covered lies on one side of all of them:
/// filled by the non-zero rule, holes stay holes.
NSBezierPath silhouetteOf(const CoverageMask& mask);

}  // namespace qz
