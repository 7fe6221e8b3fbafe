#pragma once

#include "platform/graphics/DeviceShape.h"

namespace qz {

// Paths cut to a box, for those that reach farther than the rasteriser's fixed-point numbers. Curves come out as lines.

/// Covers the same points inside `box` when filled by the non-zero rule.
NSBezierPath pathClippedForFill(const NSBezierPath& path, const DeviceBox& box);

/// The parts inside `box`. Each cut makes an end, so the box must be wider than what is looked at by the reach of the
/// pen.
NSBezierPath pathClippedForStroke(const NSBezierPath& path, const DeviceBox& box);

}  // namespace qz
