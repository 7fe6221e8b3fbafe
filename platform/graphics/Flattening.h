#pragma once

#include <vector>

#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// The actual tolerance for drawing curves with a path's flatness. Flatness is an upper limit: at the default of 0.6
/// pixels the corners of an antialiased letter would be visible, at a sixth of it they are not. A flatness that is not
/// above 0 counts as the default.
double curveTolerance(float flatness);

/// Appends the end points of lines that stay within `tolerance` of the cubic curve from `start`; the last one is `end`,
/// and `start` is not included. Appends at most `kCurveLinesMax`, so a curve that bends by more than about 100,000
/// units is approximated more coarsely.
void appendFlattenedCurve(NSBezierPath::Point start, NSBezierPath::Point control1, NSBezierPath::Point control2,
                          NSBezierPath::Point end, double tolerance, std::vector<NSBezierPath::Point>& lineEnds);

inline constexpr int32_t kCurveLinesMax = 1024;

}  // namespace qz
