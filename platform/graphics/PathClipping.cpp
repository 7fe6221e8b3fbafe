#include "platform/graphics/PathClipping.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "platform/graphics/Flattening.h"

namespace qz {
namespace {

using Point = NSBezierPath::Point;

struct Subpath {
    std::vector<Point> points;
    bool closed = false;
};

std::vector<Subpath> subpathsOf(const NSBezierPath& path) {
    struct Splitter {
        const double tolerance;
        std::vector<Subpath> subpaths{};

        void moveTo(Point point) { subpaths.push_back({.points = {point}}); }
        void lineTo(Point point) { subpaths.back().points.push_back(point); }
        void curveTo(Point control1, Point control2, Point end) {
            std::vector<Point>& points = subpaths.back().points;
            const Point start = points.back();
            appendFlattenedCurve(start, control1, control2, end, tolerance, points);
        }
        void close() { subpaths.back().closed = true; }
    };
    Splitter splitter{curveTolerance(path.flatness())};
    path.visit(splitter);
    return std::move(splitter.subpaths);
}

/// One side of a box, as a vertical or horizontal line with the box on one side of it.
struct Side {
    double Point::*along;
    double Point::*across;
    double limit;
    bool keepsAbove;

    bool keeps(Point p) const { return keepsAbove ? p.*along >= limit : p.*along <= limit; }

    // Computed from the nearer end: from a very distant one, the other end would be lost in rounding.
    Point crossing(Point a, Point b) const {
        if (std::fabs(a.*along - limit) > std::fabs(b.*along - limit)) std::swap(a, b);
        Point point;
        point.*along = limit;
        point.*across = a.*across + (limit - a.*along) / (b.*along - a.*along) * (b.*across - a.*across);
        return point;
    }
};

std::array<Side, 4> sidesOf(const DeviceBox& box) {
    return {{{&Point::x, &Point::y, box.minX, true},
             {&Point::x, &Point::y, box.maxX, false},
             {&Point::y, &Point::x, box.minY, true},
             {&Point::y, &Point::x, box.maxY, false}}};
}

// One step of Sutherland-Hodgman clipping: everything beyond the side is projected onto it, which changes no winding
// number on the near side, even with self-intersections.
void clipPolygon(std::vector<Point>& polygon, const Side& side) {
    std::vector<Point> kept;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const Point from = polygon[i], to = polygon[(i + 1) % polygon.size()];
        if (side.keeps(from)) kept.push_back(from);
        if (side.keeps(from) != side.keeps(to)) kept.push_back(side.crossing(from, to));
    }
    polygon = std::move(kept);
}

struct Line {
    Point from, to;
};

// The part of a line inside a box; no value if it misses the box.
std::optional<Line> partInside(Line line, const DeviceBox& box) {
    for (const Side& side : sidesOf(box)) {
        const bool keepsFrom = side.keeps(line.from), keepsTo = side.keeps(line.to);
        if (!keepsFrom && !keepsTo) return std::nullopt;
        if (keepsFrom && keepsTo) continue;
        (keepsFrom ? line.to : line.from) = side.crossing(line.from, line.to);
    }
    return line;
}

bool contains(const DeviceBox& box, Point point) {
    return box.minX <= point.x && point.x <= box.maxX && box.minY <= point.y && point.y <= box.maxY;
}

void appendSubpath(const Subpath& subpath, NSBezierPath& path) {
    path.moveToPoint(subpath.points.front());
    for (size_t i = 1; i < subpath.points.size(); ++i) path.lineToPoint(subpath.points[i]);
    if (subpath.closed) path.closePath();
}

void appendPartsInside(Subpath subpath, const DeviceBox& box, NSBezierPath& path) {
    const auto outside =
        std::find_if(subpath.points.begin(), subpath.points.end(), [&](Point p) { return !contains(box, p); });
    if (outside == subpath.points.end()) return appendSubpath(subpath, path);
    if (subpath.closed) {
        // Start outside, so that the loop needs no join at its start.
        std::rotate(subpath.points.begin(), outside, subpath.points.end());
        subpath.points.push_back(subpath.points.front());
    }
    bool drawing = false;
    for (size_t i = 1; i < subpath.points.size(); ++i) {
        const Point from = subpath.points[i - 1], to = subpath.points[i];
        const auto part = partInside({from, to}, box);
        if (!part) {
            drawing = false;
            continue;
        }
        if (!drawing || part->from != from) path.moveToPoint(part->from);
        path.lineToPoint(part->to);
        drawing = part->to == to;
    }
}

}  // namespace

NSBezierPath pathClippedForFill(const NSBezierPath& path, const DeviceBox& box) {
    NSBezierPath clipped;
    for (Subpath& subpath : subpathsOf(path)) {
        for (const Side& side : sidesOf(box)) clipPolygon(subpath.points, side);
        if (subpath.points.size() < 3) continue;
        subpath.closed = true;
        appendSubpath(subpath, clipped);
    }
    return clipped;
}

NSBezierPath pathClippedForStroke(const NSBezierPath& path, const DeviceBox& box) {
    NSBezierPath clipped;
    for (const Subpath& subpath : subpathsOf(path)) appendPartsInside(subpath, box, clipped);
    return clipped;
}

}  // namespace qz
