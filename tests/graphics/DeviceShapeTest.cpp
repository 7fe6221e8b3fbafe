#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/DeviceShape.h"
#include "tests/graphics/Canvas.h"

namespace qz {
namespace {

using Point = NSBezierPath::Point;

class RandomShapes {
public:
    explicit RandomShapes(unsigned seed) : random_(seed) {}

    double between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    Point point() { return {between(60, 140), between(60, 140)}; }

    NSBezierPath path(bool withCurves) {
        NSBezierPath path;
        for (int subpath = below(2); subpath >= 0; --subpath) {
            path.moveToPoint(point());
            for (int i = below(5) + 1; i > 0; --i) {
                if (withCurves && below(3) == 0) {
                    path.curveToPoint(point(), point(), below(4) == 0 ? path.currentPoint() : point());
                } else {
                    path.lineToPoint(below(8) == 0 ? path.currentPoint() : point());
                }
            }
            if (below(2) == 0) path.closePath();
        }
        path.setLineWidth(float(between(0, 12)));
        path.setLineCapStyle(NSLineCapStyle{below(3)});
        path.setLineJoinStyle(NSLineJoinStyle{below(3)});
        path.setMiterLimit(float(between(1, 20)));
        return path;
    }

    NSAffineTransform transform() {
        NSAffineTransform transform;
        transform.translateXBy(100, 100);
        transform.rotateByDegrees(below(2) * between(0, 360));
        transform.scaleXBy(between(0.3, 1.5), between(-1.5, -0.3));
        transform.translateXBy(-100, -100);
        return transform;
    }

private:
    std::mt19937 random_;
};

// Miters, caps, rotated and squeezed pens, which too small a box would cut off.
TEST(DeviceShape, NothingIsCoveredOutsideThePixelBounds) {
    const unsigned seed = 7041;
    RandomShapes random(seed);
    const PixelRect everything{-400, -400, 1000, 1000};
    CoverageMask mask;
    for (int round = 0; round < 400; ++round) {
        const NSBezierPath path = random.path(true);
        const NSAffineTransform transform = random.transform();
        for (const auto& shape : {DeviceShape::strokeOf(path, transform), DeviceShape::fillOf(path, transform)}) {
            const PixelRect box = shape.pixelBounds(everything);
            renderCoverage(shape, everything, true, mask);
            for (int y = 0; y < everything.height; ++y) {
                const uint8_t* const row = mask.row(y);
                const int rowY = everything.y + y;
                const bool isOutsideRow = rowY < box.y || rowY >= box.bottom();
                const int from = isOutsideRow ? 1000 : box.x - everything.x, to = int(box.right()) - everything.x;
                const auto isCovered = [](uint8_t value) { return value != 0; };
                ASSERT_TRUE(std::none_of(row, row + from, isCovered))
                    << "seed " << seed << " round " << round << " y " << rowY;
                if (isOutsideRow) continue;
                ASSERT_TRUE(std::none_of(row + to, row + 1000, isCovered)) << "seed " << seed << " round " << round;
            }
        }
    }
}

TEST(DeviceShape, BoundsGrowByMitersOnlyWhereTheyAre) {
    NSBezierPath square = NSBezierPath::bezierPathWithRect({{10, 10}, {20, 20}});
    square.setLineWidth(4);
    square.setMiterLimit(50);
    const PixelRect everything{0, 0, 1000, 1000};
    const PixelRect box = DeviceShape::strokeOf(square, {}).pixelBounds(everything);
    // Square corners reach half the width to each side, not half the width times the limit.
    EXPECT_EQ(box, (PixelRect{8, 8, 24, 24}));
    EXPECT_EQ(DeviceShape::fillOf(square, {}).pixelBounds(everything), (PixelRect{10, 10, 20, 20}));
    EXPECT_TRUE(DeviceShape::fillOf(square, {}).pixelBounds({30, 0, 50, 50}).isEmpty()) << "touching is outside";
}

// Geometry beyond the fixed-point range is clipped first, which must not be visible inside the box.
TEST(DeviceShape, FarGeometryLooksAsItsNearPartDoes) {
    const auto lineThrough = [](double reach) {
        NSBezierPath path = polyline({{32 - reach, 32 - reach / 2}, {32, 32}, {32 + reach, 32 - reach}});
        path.setLineWidth(9);
        return path;
    };
    const auto wedge = [](double reach) {
        return polyline({{32, 20}, {32 + reach, 20 + reach}, {32 - reach, 20 + reach}});
    };
    // Closed, with a start inside the box: the join there must survive the cut.
    const auto spike = [](double reach) {
        NSBezierPath path = polyline({{20, 20}, {20 + reach, 20}, {20, 20 + reach}});
        path.closePath();
        path.setLineWidth(8);
        return path;
    };
    const PixelRect box{0, 0, 64, 64};
    CoverageMask nearMask, farMask;
    const auto expectSame = [&](const DeviceShape& nearShape, const DeviceShape& farShape, const char* what) {
        renderCoverage(nearShape, box, true, nearMask);
        renderCoverage(farShape, box, true, farMask);
        int worst = 0;
        for (size_t i = 0; i < nearMask.bytes.size(); ++i)
            worst = std::max(worst, std::abs(nearMask.bytes[i] - farMask.bytes[i]));
        EXPECT_LE(worst, 18) << what;
        EXPECT_GT(std::ranges::count(farMask.bytes, 255), 100) << what;
    };
    for (const double reach : {1e7, 1e9, 1e15, 1e38}) {
        expectSame(DeviceShape::strokeOf(lineThrough(1000), {}), DeviceShape::strokeOf(lineThrough(reach), {}),
                   "bent line");
        expectSame(DeviceShape::strokeOf(spike(1000), {}), DeviceShape::strokeOf(spike(reach), {}), "closed corner");
        expectSame(DeviceShape::fillOf(wedge(1000), {}), DeviceShape::fillOf(wedge(reach), {}), "wedge");
    }
}

TEST(NSGraphicsContext, HostileGeometryIsDrawnOrLeftOutButHarmsNothing) {
    const double inf = INFINITY;
    const float maxFloat = std::numeric_limits<float>::max();
    enum Result { nothing, everything, anything };
    NSBezierPath hugeCurve;
    hugeCurve.moveToPoint({-1e9, 1e9});
    hugeCurve.curveToPoint({1e9, 1e9}, {-1e9, -1e9}, {1e9, -1e9});
    const auto rect = [](double x0, double y0, double x1, double y1) {
        NSBezierPath path = polyline({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
        path.closePath();
        return path;
    };
    const struct {
        NSBezierPath path;
        float lineWidth;
        Result filled, stroked;
        const char* reason;
    } cases[] = {
        {{}, 1, nothing, nothing, "no path"},
        {polyline({{5, 5}}), 10, nothing, nothing, "a lone move"},
        {rect(-1e9, -1e9, 1e9, 1e9), 1, everything, nothing, "far beyond fixed point"},
        {rect(-1e38, -1e38, 1e38, 1e38), 1, everything, nothing, "as far as floats go"},
        {rect(-1e300, -1e300, 1e300, 1e300), 1, nothing, nothing, "beyond any coordinate"},
        {rect(1e9, 1e9, 2e9, 2e9), 5, nothing, nothing, "far outside"},
        {rect(NAN, 0, 50, 50), 5, nothing, nothing, "not a number"},
        {rect(0, -inf, 50, inf), 5, nothing, nothing, "infinite"},
        {rect(10, 10, 50, 50), 1e9f, anything, everything, "a pen wider than everything"},
        {rect(10, 10, 50, 50), maxFloat, anything, everything, "the widest pen"},
        {rect(10, 10, 50, 50), INFINITY, anything, everything, "an infinite pen"},
        {rect(10, 10, 50, 50), NAN, anything, nothing, "a pen that is not a number"},
        {rect(10, 10, 50, 50), -4, anything, anything, "a negative pen"},
        {rect(10, 10, 10, 50), 1e-30f, nothing, anything, "a pen next to nothing"},
        {hugeCurve, 3, everything, anything, "a curve of many millions of pixels"},
        {polyline({{-1e9, 32}, {1e9, 32}}), 200, nothing, everything, "a line across"},
    };
    const auto start = std::chrono::steady_clock::now();
    const double pixels = Canvas::kSide * Canvas::kSide;
    for (const auto& c : cases) {
        for (const float miterLimit : {10.0f, 0.0f, maxFloat, float(NAN)}) {
            for (const auto join : {NSLineJoinStyle::miter, NSLineJoinStyle::round}) {
                NSBezierPath path = c.path;
                path.setLineWidth(c.lineWidth);
                path.setMiterLimit(miterLimit);
                path.setLineJoinStyle(join);
                path.setLineCapStyle(NSLineCapStyle::square);
                Canvas filled, stroked;
                filled.context->fill(path);
                stroked.context->stroke(path);
                if (c.filled != anything) {
                    EXPECT_EQ(filled.area(), c.filled == everything ? pixels : 0) << c.reason;
                }
                if (c.stroked != anything) {
                    EXPECT_EQ(stroked.area(), c.stroked == everything ? pixels : 0) << c.reason;
                }
            }
        }
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_LT(elapsed.count(), 20) << "something took time in proportion to the geometry";
}

TEST(NSGraphicsContext, HostileTransformsDrawNothing) {
    const double inf = INFINITY;
    for (const NSAffineTransform& transform : {NSAffineTransform{.m11 = NAN},
                                               {.tX = inf},
                                               {.m11 = 1e300, .m22 = 1e300},
                                               {.m11 = 0, .m22 = 0},
                                               {.m11 = 1, .m12 = 2, .m21 = 2, .m22 = 4}}) {
        Canvas canvas;
        canvas.context->concatTransform(transform);
        NSBezierPath path = polyline({{3, 3}, {50, 10}, {20, 60}});
        path.setLineWidth(4);
        canvas.context->fill(path);
        canvas.context->stroke(path);
        EXPECT_EQ(canvas.area(), 0);
    }
}

}  // namespace
}  // namespace qz
