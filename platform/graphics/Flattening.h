#pragma once

#include <vector>

#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// The distance to which curves are really drawn for a path's flatness. Flatness is the distance that may not be
/// passed; at the default of 0.6 pixels the corners of an antialiased letter would show, at a sixth of it they do not.
/// A flatness that is not above 0 counts as the default.
double curveTolerance(float flatness);

/// Appends the ends of lines that stay within `tolerance` of the cubic curve from `start`: the last one is `end`,
/// `start` is not among them. At most `kCurveLinesMax`, so a curve that bends by more than some 100,000 units is cut
/// more coarsely.
void appendFlattenedCurve(NSBezierPath::Point start, NSBezierPath::Point control1, NSBezierPath::Point control2,
                          NSBezierPath::Point end, double tolerance, std::vector<NSBezierPath::Point>& lineEnds);

inline constexpr int32_t kCurveLinesMax = 1024;

}  // namespace qz
