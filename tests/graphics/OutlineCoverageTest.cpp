#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "platform/graphics/OutlineCoverage.h"
#include "platform/graphics/SilhouetteTracing.h"
#include "tests/graphics/Canvas.h"

namespace qz {
namespace {

using Point = NSBezierPath::Point;

constexpr PixelRect kBox = {0, 0, 96, 96};

/// A polygon around a point, its corners at the radii in turn; clockwise for a negative direction.
NSBezierPath ringOf(Point centre, std::initializer_list<double> radii, int corners, int direction = 1) {
    NSBezierPath path;
    for (int i = 0; i < corners; ++i) {
        const double angle = direction * 2 * std::numbers::pi * i / corners + 0.1;
        const double radius = radii.begin()[size_t(i) % radii.size()];
        path.lineToPoint({centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)});
    }
    path.closePath();
    return path;
}

double areaOf(const CoverageMask& mask) {
    double sum = 0;
    for (int32_t y = 0; y < mask.box.height; ++y) {
        for (int32_t x = 0; x < mask.box.width; ++x) sum += mask.row(y)[x];
    }
    return sum / 255;
}

// Compares with the general rasteriser: only few pixels may differ by more than a shade.
TEST(OutlineCoverage, IsThatOfTheGeneralRasteriser) {
    NSBezierPath letterO = ringOf({48.3, 47.6}, {30}, 48);
    letterO.appendBezierPath(ringOf({48.3, 47.6}, {18}, 32, -1));
    NSBezierPath overlapping = ringOf({40, 48}, {22}, 5);
    overlapping.appendBezierPath(ringOf({56, 48}, {22}, 5));
    const struct {
        const char* name;
        NSBezierPath path;
    } outlines[] = {{"disc", ringOf({47.2, 48.9}, {27.3}, 60)},
                    {"a letter with a hole", letterO},
                    {"star, sharp both ways", ringOf({48, 48}, {34, 12}, 10)},
                    {"triangle", ringOf({48.7, 50.1}, {33}, 3, -1)},
                    {"hair line", polyline({{10, 10.3}, {80, 55.1}, {80, 56}, {10, 11.2}})},
                    {"two that overlap", overlapping}};
    for (const auto& [name, outline] : outlines) {
        for (const float width : {0.0f, 0.7f, 3.0f, 8.0f, 26.0f}) {
            for (const auto join : {NSLineJoinStyle::round, NSLineJoinStyle::miter, NSLineJoinStyle::bevel}) {
                SCOPED_TRACE(std::string(name) + ", " + std::to_string(width) + " wide, join " +
                             std::to_string(int(join)));
                NSBezierPath path = outline;
                path.closePath();
                path.setLineWidth(width);
                path.setLineJoinStyle(join);
                const bool isFill = width == 0;
                CoverageMask quick, general;
                const DeviceShape shape =
                    isFill ? DeviceShape::fillOfGlyph(path, {}) : DeviceShape::strokeOfGlyph(path, {});
                ASSERT_TRUE(isServedByAreas(shape, kBox));
                renderCoverage(shape, kBox, true, quick);
                renderCoverage(isFill ? DeviceShape::fillOf(path, {}) : DeviceShape::strokeOf(path, {}), kBox, true,
                               general);
                int different = 0, wrong = 0;
                for (size_t i = 0; i < quick.bytes.size(); ++i) {
                    const int difference = std::abs(quick.bytes[i] - general.bytes[i]);
                    different += difference > 24;
                    wrong += difference > 128;
                }
                EXPECT_LE(different, 60);
                EXPECT_LE(wrong, 12);
                EXPECT_NEAR(areaOf(quick), areaOf(general), 0.01 * areaOf(general) + 3);
            }
        }
    }
}

// Exact for whole and half pixels, and the same in every tile of the plane.
TEST(OutlineCoverage, IsExactAndTheSameInEveryTile) {
    const DeviceShape halves = DeviceShape::fillOfGlyph(NSBezierPath::bezierPathWithRect({{10.5, 10}, {5, 3.25}}), {});
    CoverageMask mask;
    renderCoverage(halves, {8, 8, 12, 8}, true, mask);
    EXPECT_EQ(mask.row(2)[1], 0);
    EXPECT_EQ(mask.row(2)[2], 128);
    EXPECT_EQ(mask.row(2)[3], 255);
    EXPECT_EQ(mask.row(5)[3], 64);
    EXPECT_NEAR(areaOf(mask), 5 * 3.25, 0.03);

    NSBezierPath star = ringOf({48, 48}, {34, 12}, 10);
    star.setLineWidth(9);
    star.setLineJoinStyle(NSLineJoinStyle::round);
    CoverageMask whole, tile;
    for (const DeviceShape& shape : {DeviceShape::fillOfGlyph(star, {}), DeviceShape::strokeOfGlyph(star, {})}) {
        renderCoverage(shape, kBox, true, whole);
        for (const PixelRect box : {PixelRect{40, 40, 9, 7}, {0, 50, 96, 5}, {60, 0, 30, 96}, {47, 47, 1, 1}}) {
            renderCoverage(shape, box, true, tile);
            for (int32_t y = 0; y < box.height; ++y) {
                for (int32_t x = 0; x < box.width; ++x) {
                    ASSERT_NEAR(tile.row(y)[x], whole.row(box.y + y)[box.x + x], 1) << x << ", " << y;
                }
            }
        }
    }
}

// Filling the outline traced from a mask restores its coverage.
TEST(SilhouetteTracing, GivesBackTheShape) {
    NSBezierPath letterO = ringOf({48.3, 47.6}, {30}, 48);
    letterO.appendBezierPath(ringOf({48.3, 47.6}, {18}, 32, -1));
    NSBezierPath apart = ringOf({20, 20}, {9}, 4);
    apart.appendBezierPath(ringOf({70, 60}, {20, 8}, 12));
    for (const NSBezierPath& path : {letterO, apart, NSBezierPath::bezierPathWithRect({{0, 0}, {96, 96}})}) {
        CoverageMask mask, again;
        renderCoverage(DeviceShape::fillOf(path, {}), kBox, true, mask);
        renderCoverage(DeviceShape::fillOf(silhouetteOf(mask), {}), kBox, true, again);
        EXPECT_NEAR(areaOf(again), areaOf(mask), 0.02 * areaOf(mask));
        int far = 0;
        for (size_t i = 0; i < mask.bytes.size(); ++i) far += std::abs(mask.bytes[i] - again.bytes[i]) > 100;
        EXPECT_LE(far, 8);
    }
    EXPECT_TRUE(silhouetteOf(CoverageMask::emptyOf({0, 0, 5, 5})).isEmpty());
}

}  // namespace
}  // namespace qz
