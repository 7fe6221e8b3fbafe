#include <cmath>

#include <gtest/gtest.h>

#include "platform/graphics/NSGraphicsContext.h"
#include "tests/graphics/Canvas.h"

namespace qz {
namespace {

TEST(NSGraphicsContext, FillsByTheNonZeroRule) {
    Canvas canvas;
    NSBezierPath path = NSBezierPath::bezierPathWithRect({{0, 0}, {20, 20}});
    path.appendBezierPathWithRect({{5, 5}, {5, 5}});
    canvas.context->fill(path);
    EXPECT_EQ(canvas.area(), 400) << "same direction: no hole";
    Canvas holed;
    NSBezierPath ring = NSBezierPath::bezierPathWithRect({{0, 0}, {20, 20}});
    ring.appendBezierPath(polyline({{5, 5}, {5, 10}, {10, 10}, {10, 5}}));
    holed.context->fill(ring);
    EXPECT_EQ(holed.area(), 375) << "against it: a hole; an open subpath is filled as if closed";
}

TEST(NSGraphicsContext, TransformsActOnThePenAndTheThinnestLineIsOnePixel) {
    NSAffineTransform wide;
    wide.scaleXBy(6, 2);
    Canvas canvas;
    canvas.context->concatTransform(wide);
    canvas.context->stroke(polyline({{5, 0}, {5, 10}}));
    canvas.context->stroke(polyline({{0, 20}, {4, 20}}));
    EXPECT_NEAR(canvas.area(), 6 * 20 + 24 * 2, 0.1) << "6 wide when upright, 2 when level";

    Canvas thin;
    thin.context->concatTransform(wide);
    NSBezierPath line = polyline({{5.0 + 0.5 / 6, 0}, {5.0 + 0.5 / 6, 10}});
    line.setLineWidth(0);
    thin.context->stroke(line);
    EXPECT_EQ(thin.area(), 20);
    EXPECT_EQ(thin.alphaAt(30, 10), 255);
}

TEST(NSGraphicsContext, SavesColourTransformAndAntialiasing) {
    Canvas canvas(8, 8);
    NSGraphicsContext& context = *canvas.context;
    context.saveGraphicsState();
    context.setColor(NSColor::clearColor());
    context.setShouldAntialias(false);
    NSAffineTransform away;
    away.translateXBy(1000, 0);
    context.concatTransform(away);
    context.saveGraphicsState();
    context.setColor(NSColor::whiteColor());
    context.restoreGraphicsState();
    EXPECT_EQ(mainColorOf(*context.paint()).alpha, 0);
    context.restoreGraphicsState();
    context.restoreGraphicsState();
    EXPECT_TRUE(context.shouldAntialias());
    context.fill(NSBezierPath::bezierPathWithRect({{2, 2}, {1, 0.5f}}));
    EXPECT_NEAR(canvas.alphaAt(2, 2), 128, 1);
    context.setColor({});
    context.fill(NSBezierPath::bezierPathWithRect({{0, 0}, {8, 8}}));
    EXPECT_NEAR(canvas.area(), 0.5, 0.01) << "no colour draws nothing";
}

TEST(NSGraphicsContext, AGradientFillsCoverageInUserSpace) {
    Canvas canvas(Canvas::kSide, 16, false);
    NSAffineTransform moved;
    moved.translateXBy(10, 0);
    canvas.context->concatTransform(moved);
    canvas.context->setPaint(Gradient{.end = {40, 0}, .stops = {{0, {255, 0, 0, 255}}, {1, {0, 0, 255, 255}}}});
    canvas.context->fill(NSBezierPath::bezierPathWithRect({{0, 4.5f}, {50, 8}}));
    for (const int x : {10, 29, 49, 55}) {
        const double t = std::min((x + 0.5 - 10) / 40, 1.0);
        EXPECT_NEAR(canvas.bitmap->row(8)[4 * x], 255 * (1 - t), 2) << x;
        EXPECT_NEAR(canvas.bitmap->row(8)[4 * x + 2], 255 * t, 2) << x;
    }
    EXPECT_NEAR(canvas.area(), 50 * 8, 2) << "half covered at the top and the bottom";
    EXPECT_EQ(canvas.context->changedBox(), (PixelRect{10, 3, 50, 9}));
}

TEST(NSGraphicsContext, WithoutAntialiasingPixelsAreWholeOrUntouched) {
    Canvas canvas;
    canvas.context->setShouldAntialias(false);
    NSBezierPath path = polyline({{3, 4}, {50.3, 9}, {20, 40.5}});
    path.curveToPoint({10, 60}, {60, 50}, {5, 45});
    path.setLineWidth(3.3f);
    canvas.context->fill(path);
    canvas.context->stroke(path);
    const auto bytes = canvas.bytes();
    for (size_t i = 3; i < bytes.size(); i += 4) ASSERT_TRUE(bytes[i] == 0 || bytes[i] == 255);
    EXPECT_GT(canvas.area(), 500);
}

// Masks are made in bands of rows and columns; no seam may show, and no band may be left out.
TEST(NSGraphicsContext, LargeShapesAreDrawnInBandsWithoutSeams) {
    for (const auto& [width, height] : {std::pair{3000, 3000}, {40000, 3}, {3, 40000}}) {
        Canvas canvas(width, height);
        NSBezierPath diamond;
        const double w = width, h = height;
        for (const auto point : {NSBezierPath::Point{w / 2, 0}, {w, h / 2}, {w / 2, h}, {0, h / 2}})
            diamond.lineToPoint(point);
        canvas.context->fill(diamond);
        EXPECT_NEAR(canvas.area(), w * h / 2, (w + h) / 50) << width << " x " << height;
        canvas.context->fill(NSBezierPath::bezierPathWithRect({{0, 0}, {float(width), float(height)}}));
        EXPECT_EQ(canvas.area(), w * h);
    }
}

}  // namespace
}  // namespace qz
