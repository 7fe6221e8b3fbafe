#pragma once

#include <cstdint>
#include <vector>

#include "platform/graphics/NSAffineTransform.h"

namespace qz {

/// The end of a line in an open subpath.
enum class NSLineCapStyle {
    butt = 0,    ///< at the last point
    round = 1,   ///< in a half circle around it
    square = 2,  ///< half the line's width beyond it
};
/// The corner of a line.
enum class NSLineJoinStyle {
    miter = 0,  ///< the outer edges meet in a tip; a bevel beyond the miter limit
    round = 1,  ///< in an arc around the corner
    bevel = 2,  ///< the tip is cut off straight
};

/// Lines and cubic curves with stroking parameters; a plain value. Filled by the non-zero rule.
///
/// Coordinates are in the units of the space where the path is used, in double precision, so that moving a path loses
/// no precision. Every subpath begins with a move: after a close, the next line or curve starts a new subpath where the
/// closed one began, and a path that begins with a line or curve begins at its first point.
class NSBezierPath {
public:
    /// The kinds of elements, in the order of a path.
    enum class Verb : uint8_t {
        move,   ///< begins a subpath at its point
        line,   ///< a line to its point
        curve,  ///< a cubic curve to the last of its three points
        close,  ///< a line back to the start of the subpath, joined to its first element
    };
    /// A position in the path's units.
    struct Point {
        /// No defaults: a point is always made with both.
        ///@{
        double x, y;
        ///@}
        friend bool operator==(const Point&, const Point&) = default;
    };

    /// An empty path with default drawing parameters.
    static NSBezierPath bezierPath() { return {}; }
    /// As `appendBezierPathWithRect` on an empty path.
    static NSBezierPath bezierPathWithRect(const NSRect& rect);

    /// Begins a new subpath. A move without a following element draws nothing but counts in the bounds.
    void moveToPoint(Point point);
    /// A move if it is the first element.
    void lineToPoint(Point point);
    /// Begins at `control1` if it is the first element.
    void curveToPoint(Point end, Point control1, Point control2);
    /// Does nothing on an empty path or after a close.
    void closePath();
    /// Appends a closed subpath from the rectangle's origin, first along x, which is clockwise if y grows downward.
    void appendBezierPathWithRect(const NSRect& rect);
    /// Appends the elements of another path; this path's drawing parameters stay.
    void appendBezierPath(const NSBezierPath& path);
    /// Transforms the points but not the drawing parameters, so a scaled path keeps its line width.
    void transformUsingAffineTransform(const NSAffineTransform& transform);
    /// The path with every curve replaced by lines within `flatness` units of it, or closer where the difference would
    /// be visible; keeps the drawing parameters.
    NSBezierPath bezierPathByFlatteningPath() const;

    /// The same lines and curves in reverse; keeps the drawing parameters.
    NSBezierPath bezierPathByReversingPath() const;

    /// Whether the path has no elements, not even a move.
    bool isEmpty() const { return verbs_.empty(); }
    /// The end of the last element, or the origin if there is none.
    Point currentPoint() const;
    /// The smallest rectangle around all points, including control points.
    NSRect controlPointBounds() const;

    /// Passes the elements to `visitor` in order: `moveTo(point)`, `lineTo(point)`, `curveTo(control1, control2, end)`
    /// and `close()`. The first element, and any element after a close, is a move.
    template <class Visitor>
    void visit(Visitor&& visitor) const;
    /// The same elements as two lists. A move or a line has one point, a curve three (controls first), a close none.
    ///@{
    const std::vector<Verb>& verbs() const { return verbs_; }
    const std::vector<Point>& points() const { return points_; }
    ///@}

    /// In the path's units, 1 by default; 0 or less is the thinnest line, one pixel wide under any transform, and NaN
    /// draws no line.
    ///@{
    float lineWidth() const { return lineWidth_; }
    void setLineWidth(float width) { lineWidth_ = width; }
    ///@}
    /// The greatest distance between a curve and its approximating lines, in pixels when drawn; 0 or less means the
    /// default of 0.6.
    ///@{
    float flatness() const { return flatness_; }
    void setFlatness(float flatness) { flatness_ = flatness; }
    ///@}
    /// Butt by default.
    ///@{
    NSLineCapStyle lineCapStyle() const { return lineCapStyle_; }
    void setLineCapStyle(NSLineCapStyle style) { lineCapStyle_ = style; }
    ///@}
    /// Miter by default.
    ///@{
    NSLineJoinStyle lineJoinStyle() const { return lineJoinStyle_; }
    void setLineJoinStyle(NSLineJoinStyle style) { lineJoinStyle_ = style; }
    ///@}
    /// The greatest ratio of miter length to line width before a miter becomes a bevel; 10 by default, at least 1.
    ///@{
    float miterLimit() const { return miterLimit_; }
    void setMiterLimit(float limit) { miterLimit_ = limit; }
    ///@}

    /// Draws in the current graphics context, if there is one, in its colour.
    ///@{
    void stroke() const;
    void fill() const;
    ///@}

private:
    void startSubpathAfterClose();

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

template <class Visitor>
void NSBezierPath::visit(Visitor&& visitor) const {
    const Point* point = points_.data();
    for (const Verb verb : verbs_) {
        switch (verb) {
            case Verb::move:
                visitor.moveTo(*point++);
                break;
            case Verb::line:
                visitor.lineTo(*point++);
                break;
            case Verb::curve:
                visitor.curveTo(point[0], point[1], point[2]);
                point += 3;
                break;
            case Verb::close:
                visitor.close();
                break;
        }
    }
}

}  // namespace qz
