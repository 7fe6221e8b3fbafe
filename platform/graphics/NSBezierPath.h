#pragma once

#include <cstdint>
#include <vector>

#include "platform/graphics/NSAffineTransform.h"

namespace qz {

enum class NSLineCapStyle { butt = 0, round = 1, square = 2 };
enum class NSLineJoinStyle { miter = 0, round = 1, bevel = 2 };

/// Lines and cubic curves with what it takes to stroke them; a plain value. Filling is by the non-zero rule.
///
/// Coordinates are points of whatever space the path is used in; they are kept in double precision, so that a path can
/// be moved about without wear. Every subpath begins with a move: after a close the next line or curve starts a new one
/// where the closed one began, and a path that begins with a line or curve begins at its first point.
class NSBezierPath {
public:
    enum class Verb : uint8_t { move, line, curve, close };
    struct Point {
        double x, y;
        friend bool operator==(const Point&, const Point&) = default;
    };

    static NSBezierPath bezierPath() { return {}; }
    static NSBezierPath bezierPathWithRect(const NSRect& rect);

    void moveToPoint(Point point);
    void lineToPoint(Point point);
    void curveToPoint(Point end, Point control1, Point control2);
    void closePath();
    void appendBezierPathWithRect(const NSRect& rect);
    /// Appends the elements of another path; the drawing parameters stay this path's own.
    void appendBezierPath(const NSBezierPath& path);
    void transformUsingAffineTransform(const NSAffineTransform& transform);
    /// The path with every curve replaced by lines that leave it by at most `flatness` units of the path, and by less
    /// where it would show; the drawing parameters are kept.
    NSBezierPath bezierPathByFlatteningPath() const;

    /// The same lines and curves run through backwards; the drawing parameters are kept.
    NSBezierPath bezierPathByReversingPath() const;

    bool isEmpty() const { return verbs_.empty(); }
    /// The end of the last element; the origin when there is none.
    Point currentPoint() const;
    /// The smallest rectangle around all points, control points included.
    NSRect controlPointBounds() const;

    const std::vector<Verb>& verbs() const { return verbs_; }
    /// One point for move and line, three for curve (controls first, then the end), none for close.
    const std::vector<Point>& points() const { return points_; }

    /// In the path's units; 0 is the thinnest line, one pixel wide under any transform.
    float lineWidth() const { return lineWidth_; }
    void setLineWidth(float width) { lineWidth_ = width; }
    /// The greatest distance between a curve and the lines that stand for it, in pixels when drawn; the default when
    /// not above 0.
    float flatness() const { return flatness_; }
    void setFlatness(float flatness) { flatness_ = flatness; }
    NSLineCapStyle lineCapStyle() const { return lineCapStyle_; }
    void setLineCapStyle(NSLineCapStyle style) { lineCapStyle_ = style; }
    NSLineJoinStyle lineJoinStyle() const { return lineJoinStyle_; }
    void setLineJoinStyle(NSLineJoinStyle style) { lineJoinStyle_ = style; }
    /// How many times longer than the line is wide a miter may be before it is cut to a bevel.
    float miterLimit() const { return miterLimit_; }
    void setMiterLimit(float limit) { miterLimit_ = limit; }

    /// Draw in the current graphics context, in its colour; nothing without one.
    void stroke() const;
    void fill() const;

private:
    void startSubpathAfterClose();
    void appendFlattened(Point control1, Point control2, Point end, double tolerance);

    std::vector<Verb> verbs_;
    std::vector<Point> points_;
    // Index of the last move's point.
    size_t subpathStart_ = 0;
    float lineWidth_ = 1.0f;
    float flatness_ = 0.6f;
    NSLineCapStyle lineCapStyle_ = NSLineCapStyle::butt;
    NSLineJoinStyle lineJoinStyle_ = NSLineJoinStyle::miter;
    float miterLimit_ = 10.0f;
};

}  // namespace qz
