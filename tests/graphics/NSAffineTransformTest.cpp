#include <gtest/gtest.h>

#include "platform/graphics/NSAffineTransform.h"
#include "tests/graphics/Canvas.h"

namespace qz {
namespace {

TEST(NSAffineTransform, LaterOperationsApplyFirst) {
    NSAffineTransform transform;
    transform.translateXBy(10, 20);
    transform.scaleXBy(2, -3);
    EXPECT_EQ(transform.transformPoint({1, 1}), (NSPoint{12, 17}));
    NSAffineTransform scale, move;
    scale.scaleXBy(2, 2);
    move.translateXBy(5, 0);
    NSAffineTransform movedFirst = scale, movedLast = scale;
    movedFirst.prependTransform(move);
    movedLast.appendTransform(move);
    EXPECT_EQ(movedFirst.transformPoint({1, 0}), (NSPoint{12, 0}));
    EXPECT_EQ(movedLast.transformPoint({1, 0}), (NSPoint{7, 0}));
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
