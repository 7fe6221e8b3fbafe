#include "platform/graphics/CoverageMask.h"

#include <algorithm>
#include <new>

#include "platform/graphics/Cairo.h"
#include "platform/graphics/Flattening.h"
#include "platform/graphics/OutlineCoverage.h"
#include "platform/graphics/PathClipping.h"
#include "platform/graphics/PixelRect.h"
#include "platform/graphics/PixelRows.h"

namespace qz {
namespace {

// Cairo's numbers have 24 bits before the point, including the sign, and wrap around silently. A quarter of that leaves
// room for the pen, whose reach is at most an eighth.
constexpr double kSafeDistance = 1 << 21;
static_assert(DevicePen::kHalfWidthMax * 2 <= kSafeDistance);
// Limits a round pen of any width to about a thousand corners.
constexpr double kTolerancePerHalfWidth = 5e-6;
// Distance beyond the box's edge, large enough that clipped shapes look the same inside.
constexpr double kClipMargin = 16;

DeviceBox deviceBoxOf(const PixelRect& box) {
    return {static_cast<double>(box.x), static_cast<double>(box.y), static_cast<double>(box.right()),
            static_cast<double>(box.bottom())};
}

bool isNear(const DeviceBox& path, const PixelRect& box) {
    const DeviceBox safe = deviceBoxOf(box).grownBy(kSafeDistance);
    return safe.minX <= path.minX && safe.minY <= path.minY && path.maxX <= safe.maxX && path.maxY <= safe.maxY;
}

void strokeWithPen(cairo_t* cairo, const DevicePen& pen, double tolerance) {
    constexpr cairo_line_cap_t kCaps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND, CAIRO_LINE_CAP_SQUARE};
    constexpr cairo_line_join_t kJoins[] = {CAIRO_LINE_JOIN_MITER, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_JOIN_BEVEL};
    const NSAffineTransform& t = pen.circleToDevice;
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, t.m11, t.m12, t.m21, t.m22, 0, 0);
    // The path is in pixels already: the matrix during stroking affects only the pen.
    cairo_set_matrix(cairo, &matrix);
    cairo_set_line_width(cairo, 2 * pen.halfWidth);
    cairo_set_line_cap(cairo, kCaps[static_cast<size_t>(pen.cap)]);
    cairo_set_line_join(cairo, kJoins[static_cast<size_t>(pen.join)]);
    cairo_set_miter_limit(cairo, pen.miterLimit);
    cairo_set_tolerance(cairo, std::max(tolerance, pen.halfWidth * kTolerancePerHalfWidth));
    cairo_stroke(cairo);
}

void drawShape(cairo_t* cairo, const DeviceShape& shape, const PixelRect& box) {
    const double tolerance = curveTolerance(shape.path().flatness());
    const double reach = shape.pen() ? shape.pen()->reach() : 0;
    const DeviceBox clip = deviceBoxOf(box).grownBy(reach + kClipMargin);
    // The corner of the box becomes the origin, so that Cairo's numbers stay small on any bitmap.
    const NSBezierPath::Point origin{static_cast<double>(box.x), static_cast<double>(box.y)};
    if (isNear(shape.pathBounds(), box)) {
        appendToCairo(cairo, shape.path(), origin);
    } else if (shape.pen()) {
        appendToCairo(cairo, pathClippedForStroke(shape.path(), clip), origin);
    } else {
        appendToCairo(cairo, pathClippedForFill(shape.path(), clip), origin);
    }
    if (shape.pen()) return strokeWithPen(cairo, *shape.pen(), tolerance);
    cairo_set_tolerance(cairo, tolerance);
    cairo_fill(cairo);
}

void drawShapeInto(CoverageMask& mask, const DeviceShape& shape, bool antialias) {
    const CairoSurfaceRef surface(cairo_image_surface_create_for_data(mask.bytes.data(), CAIRO_FORMAT_A8,
                                                                      mask.box.width, mask.box.height, mask.stride));
    const CairoRef cairo(cairo_create(surface.get()));
    cairo_set_antialias(cairo.get(), antialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    drawShape(cairo.get(), shape, mask.box);
    // Cairo continues without anything it had no memory for.
    if (cairo_status(cairo.get()) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    cairo_surface_flush(surface.get());
}

void makeEmpty(CoverageMask& mask, const PixelRect& box) {
    mask.box = box;
    // Rows consist of whole blocks for blending; Cairo accepts any multiple of four.
    mask.stride = (box.width + 7) / 8 * 8;
    mask.bytes.assign(static_cast<size_t>(mask.stride) * static_cast<size_t>(box.height), 0);
}

}  // namespace

CoverageMask CoverageMask::emptyOf(const PixelRect& box) {
    CoverageMask mask;
    makeEmpty(mask, box);
    return mask;
}

void renderCoverage(std::span<const DeviceShape> shapes, const PixelRect& box, bool antialias, CoverageMask& mask) {
    mask.box = {};
    mask.stride = 0;
    mask.bytes.clear();
    if (box.isEmpty() || std::max(box.width, box.height) > kCoverageSideMax) return;
    makeEmpty(mask, box);
    // Painting into one mask unites shapes as `uniteMasks` would.
    bool isFirst = true;
    for (const DeviceShape& shape : shapes) {
        if (shape.pixelBounds(box).isEmpty()) continue;
        if (antialias && isServedByAreas(shape, box)) {
            addOutlineCoverage(shape, isFirst, mask);
        } else {
            drawShapeInto(mask, shape, antialias);
        }
        isFirst = false;
    }
}

PixelRect uniteMasks(const CoverageMask& mask, int32_t dx, int32_t dy, CoverageMask& target) {
    const PixelRect common = intersectionOfMoved(mask.box, dx, dy, target.box);
    const int64_t left = int64_t{common.x} - dx - mask.box.x, top = int64_t{common.y} - dy - mask.box.y;
    for (int32_t i = 0; i < common.height; ++i) {
        pixelRows().uniteCoverage(mask.row(static_cast<int32_t>(top + i)) + left, static_cast<size_t>(common.width),
                                  target.row(common.y - target.box.y + i) + (common.x - target.box.x));
    }
    return common;
}

}  // namespace qz
