#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "platform/graphics/Flattening.h"
#include "platform/graphics/NSAffineTransform.h"
#include "platform/graphics/NSBezierPath.h"
#include "tests/graphics/Canvas.h"

namespace qz {
namespace {

using Point = NSBezierPath::Point;
using Verb = NSBezierPath::Verb;

/// From a point to the nearest point of the line between two others.
double distanceToLine(Point p, Point a, Point b) {
    const double dx = b.x - a.x, dy = b.y - a.y, lengthSquared = dx * dx + dy * dy;
    const double along = (p.x - a.x) * dx + (p.y - a.y) * dy;
    const double t = lengthSquared == 0 ? 0 : std::clamp(along / lengthSquared, 0.0, 1.0);
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

double distanceToLines(Point p, const std::vector<Point>& points) {
    double nearest = INFINITY;
    for (size_t i = 1; i < points.size(); ++i) nearest = std::min(nearest, distanceToLine(p, points[i - 1], points[i]));
    return nearest;
}

// By de Casteljau's construction, independent of the polynomial used in flattening.
Point onCurve(Point a, Point b, Point c, Point d, double t) {
    const auto between = [t](Point p, Point q) { return Point{p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)}; };
    const Point ab = between(a, b), bc = between(b, c), cd = between(c, d);
    return between(between(ab, bc), between(bc, cd));
}

TEST(NSBezierPath, FlattenedCurvesStayWithinTheFlatness) {
    const unsigned seed = 20240611;
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(-200, 200);
    const auto anyPoint = [&] { return Point{coordinate(random), coordinate(random)}; };
    for (const float flatness : {0.05f, 0.6f, 10.0f}) {
        for (int round = 0; round < 60; ++round) {
            const Point a = anyPoint(), b = anyPoint(), c = round % 3 == 0 ? a : anyPoint(),
                        d = round % 5 == 0 ? a : anyPoint();
            NSBezierPath path;
            path.setFlatness(flatness);
            path.moveToPoint(a);
            path.curveToPoint(d, b, c);
            const auto flat = path.bezierPathByFlatteningPath();
            for (int i = 0; i <= 400; ++i) {
                ASSERT_LE(distanceToLines(onCurve(a, b, c, d, i / 400.0), flat.points()), flatness) << "seed " << seed;
            }
            EXPECT_EQ(flat.points().back(), d);
            EXPECT_EQ(std::ranges::count(flat.verbs(), Verb::curve), 0);
        }
    }
}

TEST(NSBezierPath, FlatteningKeepsSubpathsAndParametersAndIsBounded) {
    NSBezierPath path = NSBezierPath::bezierPathWithRect({{0, 0}, {4, 4}});
    path.curveToPoint({9, 9}, {0, 9}, {9, 0});
    path.closePath();
    path.setLineWidth(7);
    path.setLineJoinStyle(NSLineJoinStyle::round);
    path.setMiterLimit(3);
    const auto flat = path.bezierPathByFlatteningPath();
    EXPECT_EQ(std::ranges::count(flat.verbs(), Verb::move), 2);
    EXPECT_EQ(std::ranges::count(flat.verbs(), Verb::close), 2);
    EXPECT_EQ(flat.currentPoint(), (Point{0, 0}));
    EXPECT_EQ(flat.lineWidth(), 7);
    EXPECT_EQ(flat.lineJoinStyle(), NSLineJoinStyle::round);
    EXPECT_EQ(flat.miterLimit(), 3);

    const auto linesAtFlatness = [](float flatness, double size) {
        NSBezierPath curve;
        curve.setFlatness(flatness);
        curve.moveToPoint({0, 0});
        curve.curveToPoint({size, 0}, {0, size}, {size, size});
        return curve.bezierPathByFlatteningPath().verbs().size() - 1;
    };
    EXPECT_GT(linesAtFlatness(0.6f, 300), linesAtFlatness(10, 300)) << "coarser must cost less";
    EXPECT_EQ(linesAtFlatness(0, 300), linesAtFlatness(0.6f, 300)) << "0 is the default, not endless";
    EXPECT_EQ(linesAtFlatness(-5, 300), linesAtFlatness(0.6f, 300));
    EXPECT_EQ(linesAtFlatness(NAN, 300), linesAtFlatness(0.6f, 300));
    EXPECT_EQ(linesAtFlatness(INFINITY, 300), 1u);
    for (const double size : {1e12, 1e300, double{INFINITY}, double{NAN}}) {
        EXPECT_LE(linesAtFlatness(1e-30f, size), size_t{kCurveLinesMax}) << size;
    }
}

TEST(NSBezierPath, EverySubpathBeginsWithAMove) {
    NSBezierPath path;
    path.closePath();
    EXPECT_TRUE(path.isEmpty());
    path.lineToPoint({1, 2});
    path.lineToPoint({3, 4});
    path.closePath();
    path.closePath();
    EXPECT_EQ(path.currentPoint(), (Point{1, 2}));
    path.lineToPoint({5, 6});
    EXPECT_EQ(path.verbs(), (std::vector{Verb::move, Verb::line, Verb::close, Verb::move, Verb::line}));
    EXPECT_EQ(path.points(), (std::vector<Point>{{1, 2}, {3, 4}, {1, 2}, {5, 6}}));

    path.closePath();
    path.appendBezierPath(path);
    EXPECT_EQ(path.verbs().size(), 12u);
    EXPECT_EQ(path.currentPoint(), (Point{1, 2}));
    NSBezierPath other;
    other.moveToPoint({8, 8});
    other.lineToPoint({9, 9});
    other.setLineWidth(40);
    path.appendBezierPath(other);
    path.closePath();
    EXPECT_EQ(path.currentPoint(), (Point{8, 8})) << "an appended subpath closes to its own start";
    EXPECT_EQ(path.lineWidth(), 1);
}

TEST(NSBezierPath, BoundsHoldControlPointsAndFollowTransforms) {
    EXPECT_EQ(NSBezierPath().controlPointBounds(), NSRect{});
    NSBezierPath path;
    path.moveToPoint({1, 1});
    path.curveToPoint({2, 2}, {-5, 3}, {4, 30});
    EXPECT_EQ(path.controlPointBounds(), (NSRect{{-5, 1}, {9, 29}}));
    NSAffineTransform mirror;
    mirror.scaleXBy(1, -1);
    path.transformUsingAffineTransform(mirror);
    EXPECT_EQ(path.controlPointBounds(), (NSRect{{-5, -30}, {9, 29}}));
}

TEST(NSAffineTransform, LaterOperationsApplyFirst) {
    NSAffineTransform transform;
    transform.translateXBy(10, 20);
    transform.scaleXBy(2, -3);
    EXPECT_EQ(transform.transformPoint({1, 1}), (NSPoint{12, 17}));
    NSAffineTransform scale, move;
    scale.scaleXBy(2, 2);
    move.translateXBy(5, 0);
    scale.prependTransform(move);
    EXPECT_EQ(scale.transformPoint({1, 0}), (NSPoint{12, 0}));
}

TEST(NSAffineTransform, TurnsFromXTowardYAndKeepsAxesAtHalfTurns) {
    NSAffineTransform quarter;
    quarter.rotateByDegrees(90);
    EXPECT_EQ(quarter.transformPoint({2, 1}), (NSPoint{-1, 2}));
    NSAffineTransform half = quarter;
    half.rotateByDegrees(90);
    EXPECT_TRUE(half.isScaleAndTranslation());
    EXPECT_FALSE(quarter.isScaleAndTranslation());
    NSAffineTransform wholeTurns;
    wholeTurns.rotateByDegrees(-720);
    EXPECT_EQ(wholeTurns, NSAffineTransform{});
}

TEST(NSAffineTransform, ConcatActsOnTheCurrentContextInsideWhatIsThere) {
    Canvas canvas(8, 8, false);
    NSGraphicsContext::setCurrentContext(canvas.context);
    NSAffineTransform move;
    move.translateXBy(3, 1);
    move.concat();
    NSBezierPath::bezierPathWithRect({{0, 0}, {1, 1}}).fill();
    NSGraphicsContext::setCurrentContext({});
    move.concat();
    EXPECT_EQ(canvas.area(), 1);
    EXPECT_EQ(canvas.alphaAt(3, 6), 255) << "one up from the bottom row";
}

}  // namespace
}  // namespace qz
