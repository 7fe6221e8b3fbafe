#pragma once

#include "platform/graphics/DeviceShape.h"

namespace qz {

// Clips paths that exceed the range of the rasteriser's fixed-point numbers to a box. Curves become lines.

/// Fills the same points inside `box` by the non-zero rule.
NSBezierPath pathClippedForFill(const NSBezierPath& path, const DeviceBox& box);

/// The parts inside `box`. Each cut makes an end, so the box must exceed the visible area by the reach of the pen.
NSBezierPath pathClippedForStroke(const NSBezierPath& path, const DeviceBox& box);

}  // namespace qz
