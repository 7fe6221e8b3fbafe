#include "platform/graphics/Flattening.h"

#include <algorithm>
#include <cmath>

namespace qz {
namespace {

using Point = NSBezierPath::Point;

constexpr float kDefaultFlatness = 0.6f;
constexpr double kFlatnessPerTolerance = 6;
// The rasteriser's grid, and a distance at which any curve is a straight line.
constexpr double kToleranceMin = 1.0 / 256;
constexpr double kToleranceMax = 1024;

double secondDifference(Point a, Point b, Point c) {
    const double x = a.x - 2 * b.x + c.x, y = a.y - 2 * b.y + c.y;
    return std::sqrt(x * x + y * y);  // coordinates are far from where squares overflow
}

// Wang's formula: a curve of degree d cut at n equal steps of its parameter leaves its chords by at most d (d - 1) / 8
// x M / n^2, M being the longest second difference of its control points.
int32_t lineCount(Point p0, Point p1, Point p2, Point p3, double tolerance) {
    const double m = std::max(secondDifference(p0, p1, p2), secondDifference(p1, p2, p3));
    const double count = std::ceil(std::sqrt(3.0 * 2.0 / 8.0 * m / tolerance));
    if (std::isnan(count)) return 1;
    return static_cast<int32_t>(std::clamp(count, 1.0, double{kCurveLinesMax}));
}

Point pointAt(Point p0, Point p1, Point p2, Point p3, double t) {
    const double u = 1 - t;
    const double b0 = u * u * u, b1 = 3 * u * u * t, b2 = 3 * u * t * t, b3 = t * t * t;
    return {b0 * p0.x + b1 * p1.x + b2 * p2.x + b3 * p3.x, b0 * p0.y + b1 * p1.y + b2 * p2.y + b3 * p3.y};
}

}  // namespace

double curveTolerance(float flatness) {
    const double asked = flatness > 0 ? flatness : kDefaultFlatness;
    return std::clamp(asked / kFlatnessPerTolerance, kToleranceMin, kToleranceMax);
}

void appendFlattenedCurve(Point start, Point control1, Point control2, Point end, double tolerance,
                          std::vector<Point>& lineEnds) {
    const int32_t count = lineCount(start, control1, control2, end, tolerance);
    for (int32_t i = 1; i < count; ++i) {
        lineEnds.push_back(pointAt(start, control1, control2, end, static_cast<double>(i) / count));
    }
    lineEnds.push_back(end);
}

}  // namespace qz
