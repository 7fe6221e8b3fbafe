#pragma once

#include <cstdint>
#include <vector>

#include "platform/graphics/NSAffineTransform.h"

namespace qz {

/// How a line ends where its subpath is open.
enum class NSLineCapStyle {
    butt = 0,    ///< at the last point
    round = 1,   ///< in a half circle around it
    square = 2,  ///< half the line's width beyond it
};
/// How a line turns a corner.
enum class NSLineJoinStyle {
    miter = 0,  ///< the outer edges meet in a tip; beyond the miter limit as a bevel
    round = 1,  ///< in an arc around the corner
    bevel = 2,  ///< the tip is cut off straight
};

/// Lines and cubic curves with what it takes to stroke them; a plain value. Filling is by the non-zero rule.
///
/// Coordinates are points of whatever space the path is used in; they are kept in double precision, so that a path can
/// be moved about without wear. Every subpath begins with a move: after a close the next line or curve starts a new one
/// where the closed one began, and a path that begins with a line or curve begins at its first point.
class NSBezierPath {
public:
    /// The kinds of elements, in the order of a path.
    enum class Verb : uint8_t {
        move,   ///< begins a subpath at its point
        line,   ///< to its point
        curve,  ///< a cubic, to the last of its three points
        close,  ///< a line back to where the subpath began, joined to its first
    };
    /// A place in the path's units.
    struct Point {
        /// Without values of their own: a point is made with both.
        ///@{
        double x, y;
        ///@}
        friend bool operator==(const Point&, const Point&) = default;
    };

    /// The empty path, with the drawing parameters at their defaults.
    static NSBezierPath bezierPath() { return {}; }
    /// As `appendBezierPathWithRect` on an empty path.
    static NSBezierPath bezierPathWithRect(const NSRect& rect);

    /// Begins a new subpath. A move that nothing follows fills and strokes nothing but counts in the bounds.
    void moveToPoint(Point point);
    /// As the first element it is a move.
    void lineToPoint(Point point);
    /// As the first element it begins at `control1`.
    void curveToPoint(Point end, Point control1, Point control2);
    /// Does nothing on an empty path or behind a close.
    void closePath();
    /// A closed subpath from the rectangle's origin, first along x: clockwise as seen where y grows downward.
    void appendBezierPathWithRect(const NSRect& rect);
    /// Appends the elements of another path; the drawing parameters stay this path's own.
    void appendBezierPath(const NSBezierPath& path);
    /// Transforms the points; the drawing parameters stay, so a scaled path has lines of the width before.
    void transformUsingAffineTransform(const NSAffineTransform& transform);
    /// The path with every curve replaced by lines that leave it by at most `flatness` units of the path, and by less
    /// where it would show; the drawing parameters are kept.
    NSBezierPath bezierPathByFlatteningPath() const;

    /// The same lines and curves run through backwards; the drawing parameters are kept.
    NSBezierPath bezierPathByReversingPath() const;

    /// Whether there is no element, not even a move.
    bool isEmpty() const { return verbs_.empty(); }
    /// The end of the last element; the origin when there is none.
    Point currentPoint() const;
    /// The smallest rectangle around all points, control points included.
    NSRect controlPointBounds() const;

    /// Hands the elements to `visitor` in their order: `moveTo(point)`, `lineTo(point)`,
    /// `curveTo(control1, control2, end)` and `close()`. The first is a move, as is one that follows a close.
    template <class Visitor>
    void visit(Visitor&& visitor) const;
    /// The same elements as two lists. A move or a line has one point, a curve three (controls first), a close no
    /// point.
    ///@{
    const std::vector<Verb>& verbs() const { return verbs_; }
    const std::vector<Point>& points() const { return points_; }
    ///@}

    /// In the path's units, 1 at first; 0 or less is the thinnest line, one pixel wide under any transform, and
    /// not-a-number draws none.
    ///@{
    float lineWidth() const { return lineWidth_; }
    void setLineWidth(float width) { lineWidth_ = width; }
    ///@}
    /// The greatest distance between a curve and the lines that stand for it, in pixels when drawn; the default of 0.6
    /// when not above 0.
    ///@{
    float flatness() const { return flatness_; }
    void setFlatness(float flatness) { flatness_ = flatness; }
    ///@}
    /// Butt at first.
    ///@{
    NSLineCapStyle lineCapStyle() const { return lineCapStyle_; }
    void setLineCapStyle(NSLineCapStyle style) { lineCapStyle_ = style; }
    ///@}
    /// Miter at first.
    ///@{
    NSLineJoinStyle lineJoinStyle() const { return lineJoinStyle_; }
    void setLineJoinStyle(NSLineJoinStyle style) { lineJoinStyle_ = style; }
    ///@}
    /// How many times longer than the line is wide a miter may be before it is cut to a bevel; 10 at first, and below 1
    /// as 1.
    ///@{
    float miterLimit() const { return miterLimit_; }
    void setMiterLimit(float limit) { miterLimit_ = limit; }
    ///@}

    /// Draws in the current graphics context, in its colour; nothing without one.
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
