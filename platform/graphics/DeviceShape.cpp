#include "platform/graphics/DeviceShape.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qz {
namespace {

using Point = NSBezierPath::Point;

// Above the largest float, yet small enough that differences and squares of coordinates stay finite.
constexpr double kCoordinateMax = 1e40;
// Ratio of the pen's shortest radius to its longest, below which the pen is a line.
constexpr double kPenFlatnessMin = 1e-9;
// The rasteriser rounds points to this grid, which changes the direction of short lines.
constexpr double kGridPerPixel = 256;

Point onGrid(Point point) {
    return {std::nearbyint(point.x * kGridPerPixel) / kGridPerPixel,
            std::nearbyint(point.y * kGridPerPixel) / kGridPerPixel};
}

// The larger singular value of the linear part.
double longestRadius(const NSAffineTransform& t) {
    return (std::hypot(t.m11 + t.m22, t.m12 - t.m21) + std::hypot(t.m11 - t.m22, t.m12 + t.m21)) / 2;
}

double determinant(const NSAffineTransform& t) {
    return t.m11 * t.m22 - t.m12 * t.m21;
}

std::optional<DevicePen> penOf(const NSBezierPath& path, const NSAffineTransform& toDevice) {
    DevicePen pen{.cap = path.lineCapStyle(), .join = path.lineJoinStyle()};
    if (std::isnan(path.lineWidth())) return std::nullopt;
    if (path.lineWidth() > 0) {
        const double stretch = longestRadius(toDevice);
        pen.circleToDevice = {.m11 = toDevice.m11 / stretch,
                              .m12 = toDevice.m12 / stretch,
                              .m21 = toDevice.m21 / stretch,
                              .m22 = toDevice.m22 / stretch};
        if (!(std::fabs(determinant(pen.circleToDevice)) > kPenFlatnessMin)) return std::nullopt;
        pen.halfWidth = std::min(path.lineWidth() * stretch / 2, DevicePen::kHalfWidthMax);
    }
    const double limitMax = std::max(1.0, DevicePen::kHalfWidthMax / pen.halfWidth);
    pen.miterLimit = path.miterLimit() >= 1 ? std::min<double>(path.miterLimit(), limitMax) : 1;
    return pen;
}

/// Follows a path like the pen and collects the box that the pen may touch: the pen's radius along the path, and more
/// only at sharp miters and square ends.
class StrokeBounds {
public:
    explicit StrokeBounds(const DevicePen& pen)
        : pen_(pen),
          reachX_(pen.halfWidth * std::hypot(pen.circleToDevice.m11, pen.circleToDevice.m21)),
          reachY_(pen.halfWidth * std::hypot(pen.circleToDevice.m12, pen.circleToDevice.m22)) {}

    void moveTo(Point point) {
        endSubpath();
        start_ = current_ = point;
        include(point, 1);
    }

    void lineTo(Point point) {
        const Direction direction = directionOf(current_, point);
        advance(point, direction, direction);
    }

    void curveTo(Point control1, Point control2, Point end) {
        include(control1, 1);
        include(control2, 1);
        const Point points[] = {current_, control1, control2, end};
        advance(end, firstDirection({points[0], points[1], points[2], points[3]}),
                firstDirection({points[3], points[2], points[1], points[0]}).reversed());
    }

    void close() {
        lineTo(start_);
        join(start_, firstDirection_);
        firstDirection_ = lastDirection_ = {};
        closed_ = true;
    }

    void endSubpath() {
        if (!closed_ && pen_.cap == NSLineCapStyle::square) {
            include(start_, std::numbers::sqrt2);
            include(current_, std::numbers::sqrt2);
        }
        firstDirection_ = lastDirection_ = {};
        closed_ = false;
    }

    const DeviceBox& box() const { return box_; }

private:
    // The rasteriser may see a ratio close to the miter limit on the other side of it.
    static constexpr double kLimitMargin = 1.001;

    /// A unit vector, or zero for no direction.
    struct Direction {
        Point inCircle{0, 0}, onDevice{0, 0};

        bool isNone() const { return onDevice == Point{0, 0}; }
        Direction reversed() const { return {{-inCircle.x, -inCircle.y}, {-onDevice.x, -onDevice.y}}; }
    };

    void include(Point point, double radii) { box_.include(point, radii * reachX_, radii * reachY_); }

    void advance(Point end, Direction out, Direction in) {
        if (!out.isNone()) {
            join(current_, out);
            if (firstDirection_.isNone()) firstDirection_ = out;
            lastDirection_ = in;
        }
        current_ = end;
        include(end, 1);
    }

    // In the pen's circle, a miter's tip lies opposite the turn at a distance of the half width over cos(turn / 2). The
    // rasteriser compares the turn on the device, which differs for an uneven pen, with the miter limit; allow the
    // miter if either does.
    void join(Point point, Direction out) {
        if (pen_.join != NSLineJoinStyle::miter || lastDirection_.isNone() || out.isNone()) return;
        const double ratio = miterRatio(lastDirection_.inCircle, out.inCircle);
        const double allowed = pen_.miterLimit * kLimitMargin;
        if (ratio > allowed && miterRatio(lastDirection_.onDevice, out.onDevice) > allowed) return;
        const double x = lastDirection_.inCircle.x - out.inCircle.x, y = lastDirection_.inCircle.y - out.inCircle.y;
        const double length = std::hypot(x, y);
        if (length == 0) return;
        const double scale = pen_.halfWidth * ratio / length;
        const NSAffineTransform& t = pen_.circleToDevice;
        box_.include({point.x + scale * (t.m11 * x + t.m21 * y), point.y + scale * (t.m12 * x + t.m22 * y)});
    }

    // Miter length over line width is 1 / cos(turn / 2), and 2 cos^2(turn / 2) = 1 + cos(turn).
    static double miterRatio(Point in, Point out) {
        return std::sqrt(2 / std::max(1 + in.x * out.x + in.y * out.y, 1e-12));
    }

    // Zero between points that are equal on the rasteriser's grid.
    Direction directionOf(Point from, Point to) const {
        const NSAffineTransform& t = pen_.circleToDevice;
        const Point a = onGrid(from), b = onGrid(to);
        const double dx = b.x - a.x, dy = b.y - a.y;
        // The inverse of the linear part; dividing by the length cancels its scale.
        const double sign = std::copysign(1.0, determinant(t));
        return {unit({sign * (t.m22 * dx - t.m21 * dy), sign * (t.m11 * dy - t.m12 * dx)}), unit({dx, dy})};
    }

    static Point unit(Point vector) {
        const double length = std::hypot(vector.x, vector.y);
        return length > 0 ? Point{vector.x / length, vector.y / length} : Point{0, 0};
    }

    // A curve starts towards the next point that differs from its first.
    Direction firstDirection(std::initializer_list<Point> points) const {
        for (const Point& point : points) {
            const Direction direction = directionOf(*points.begin(), point);
            if (!direction.isNone()) return direction;
        }
        return {};
    }

    const DevicePen& pen_;
    const double reachX_, reachY_;
    DeviceBox box_;
    Point start_{0, 0}, current_{0, 0};
    Direction firstDirection_, lastDirection_;
    // Whether there is no open subpath with ends.
    bool closed_ = true;
};

DeviceBox strokeBounds(const NSBezierPath& path, const DevicePen& pen) {
    StrokeBounds bounds(pen);
    path.visit(bounds);
    bounds.endSubpath();
    return bounds.box();
}

}  // namespace

void DeviceBox::include(Point point, double reachX, double reachY) {
    const bool first = isEmpty();
    minX = first ? point.x - reachX : std::min(minX, point.x - reachX);
    minY = first ? point.y - reachY : std::min(minY, point.y - reachY);
    maxX = first ? point.x + reachX : std::max(maxX, point.x + reachX);
    maxY = first ? point.y + reachY : std::max(maxY, point.y + reachY);
}

PixelRect DeviceBox::pixels(const PixelRect& within) const {
    if (isEmpty()) return {};
    // Clamp before converting to integers, which these doubles may not fit.
    const double left = std::max<double>(std::floor(minX), within.x);
    const double top = std::max<double>(std::floor(minY), within.y);
    const double right = std::min(std::ceil(maxX), static_cast<double>(within.right()));
    const double bottom = std::min(std::ceil(maxY), static_cast<double>(within.bottom()));
    if (!(left < right && top < bottom)) return {};
    return {static_cast<int32_t>(left), static_cast<int32_t>(top), static_cast<int32_t>(right - left),
            static_cast<int32_t>(bottom - top)};
}

double DevicePen::reach() const {
    return halfWidth * std::max(std::numbers::sqrt2, join == NSLineJoinStyle::miter ? miterLimit : 1);
}

DeviceShape::DeviceShape(const NSBezierPath& path, const NSAffineTransform& toDevice) : path_(path) {
    path_.transformUsingAffineTransform(toDevice);
    for (const Point point : path_.points()) {
        // Written so that NaN fails too.
        const bool drawable = std::fabs(point.x) <= kCoordinateMax && std::fabs(point.y) <= kCoordinateMax;
        if (!drawable) {
            pathBounds_ = {};
            return;
        }
        pathBounds_.include(point);
    }
}

DeviceShape DeviceShape::fillOf(const NSBezierPath& path, const NSAffineTransform& toDevice) {
    DeviceShape shape(path, toDevice);
    shape.bounds_ = shape.pathBounds_;
    return shape;
}

DeviceShape DeviceShape::strokeOf(const NSBezierPath& path, const NSAffineTransform& toDevice) {
    DeviceShape shape(path, toDevice);
    shape.pen_ = penOf(path, toDevice);
    if (shape.pen_ && !shape.pathBounds_.isEmpty()) shape.bounds_ = strokeBounds(shape.path_, *shape.pen_);
    return shape;
}

DeviceShape DeviceShape::fillOfGlyph(const NSBezierPath& outline, const NSAffineTransform& toDevice) {
    DeviceShape shape = fillOf(outline, toDevice);
    shape.isGlyphOutline_ = true;
    return shape;
}

DeviceShape DeviceShape::strokeOfGlyph(const NSBezierPath& outline, const NSAffineTransform& toDevice) {
    if (outline.lineJoinStyle() == NSLineJoinStyle::miter) {
        DeviceShape shape = strokeOf(outline, toDevice);
        shape.isGlyphOutline_ = true;
        return shape;
    }
    // Closed contours have no caps, so the pen's reach is the same everywhere.
    DeviceShape shape = fillOfGlyph(outline, toDevice);
    shape.pen_ = penOf(outline, toDevice);
    shape.bounds_ = {};
    if (shape.pen_ && !shape.pathBounds_.isEmpty()) shape.bounds_ = shape.pathBounds_.grownBy(shape.pen_->halfWidth);
    return shape;
}

}  // namespace qz
