#include "platform/graphics/NSBezierPath.h"

#include <algorithm>

#include "platform/graphics/Flattening.h"
#include "platform/graphics/NSGraphicsContext.h"

namespace qz {

NSBezierPath NSBezierPath::bezierPathWithRect(const NSRect& rect) {
    NSBezierPath path;
    path.appendBezierPathWithRect(rect);
    return path;
}

void NSBezierPath::moveToPoint(Point point) {
    subpathStart_ = points_.size();
    verbs_.push_back(Verb::move);
    points_.push_back(point);
}

void NSBezierPath::lineToPoint(Point point) {
    if (isEmpty()) return moveToPoint(point);
    startSubpathAfterClose();
    verbs_.push_back(Verb::line);
    points_.push_back(point);
}

void NSBezierPath::curveToPoint(Point end, Point control1, Point control2) {
    if (isEmpty()) moveToPoint(control1);
    startSubpathAfterClose();
    verbs_.push_back(Verb::curve);
    points_.insert(points_.end(), {control1, control2, end});
}

void NSBezierPath::closePath() {
    if (!isEmpty() && verbs_.back() != Verb::close) verbs_.push_back(Verb::close);
}

void NSBezierPath::startSubpathAfterClose() {
    if (verbs_.back() == Verb::close) moveToPoint(currentPoint());
}

void NSBezierPath::appendBezierPathWithRect(const NSRect& rect) {
    const double minX = rect.origin.x, maxX = minX + rect.size.width;
    const double minY = rect.origin.y, maxY = minY + rect.size.height;
    moveToPoint({minX, minY});
    lineToPoint({maxX, minY});
    lineToPoint({maxX, maxY});
    lineToPoint({minX, maxY});
    closePath();
}

void NSBezierPath::appendBezierPath(const NSBezierPath& path) {
    if (&path == this) return appendBezierPath(NSBezierPath(path));
    if (path.isEmpty()) return;
    subpathStart_ = points_.size() + path.subpathStart_;
    verbs_.insert(verbs_.end(), path.verbs_.begin(), path.verbs_.end());
    points_.insert(points_.end(), path.points_.begin(), path.points_.end());
}

void NSBezierPath::transformUsingAffineTransform(const NSAffineTransform& transform) {
    for (Point& point : points_) {
        point = {transform.m11 * point.x + transform.m21 * point.y + transform.tX,
                 transform.m12 * point.x + transform.m22 * point.y + transform.tY};
    }
}

NSBezierPath NSBezierPath::bezierPathByFlatteningPath() const {
    struct Flattener {
        NSBezierPath& flat;
        const double tolerance;

        void moveTo(Point point) { flat.moveToPoint(point); }
        void lineTo(Point point) { flat.lineToPoint(point); }
        void curveTo(Point control1, Point control2, Point end) {
            const size_t pointCount = flat.points_.size();
            appendFlattenedCurve(flat.points_.back(), control1, control2, end, tolerance, flat.points_);
            flat.verbs_.resize(flat.verbs_.size() + flat.points_.size() - pointCount, Verb::line);
        }
        void close() { flat.closePath(); }
    };
    NSBezierPath flat = *this;
    flat.verbs_.clear();
    flat.points_.clear();
    visit(Flattener{flat, curveTolerance(flatness_)});
    return flat;
}

NSBezierPath NSBezierPath::bezierPathByReversingPath() const {
    NSBezierPath reversed = *this;
    reversed.verbs_.clear();
    reversed.points_.clear();
    const Point* point = points_.data() + points_.size();
    for (size_t end = verbs_.size(); end > 0;) {
        // One subpath, from its last element to its move.
        const bool isClosed = verbs_[end - 1] == Verb::close;
        if (isClosed) --end;
        reversed.moveToPoint(*--point);
        for (; verbs_[end - 1] != Verb::move; --end) {
            if (verbs_[end - 1] == Verb::line) {
                reversed.lineToPoint(*--point);
            } else {
                point -= 3;
                reversed.curveToPoint(point[0], point[2], point[1]);
            }
        }
        --end;
        if (isClosed) reversed.closePath();
    }
    return reversed;
}

NSBezierPath::Point NSBezierPath::currentPoint() const {
    if (isEmpty()) return {0, 0};
    return verbs_.back() == Verb::close ? points_[subpathStart_] : points_.back();
}

NSRect NSBezierPath::controlPointBounds() const {
    if (points_.empty()) return {};
    Point low = points_.front(), high = low;
    for (const Point point : points_) {
        low = {std::min(low.x, point.x), std::min(low.y, point.y)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y)};
    }
    return {{static_cast<float>(low.x), static_cast<float>(low.y)},
            {static_cast<float>(high.x - low.x), static_cast<float>(high.y - low.y)}};
}

void NSBezierPath::stroke() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->stroke(*this);
}

void NSBezierPath::fill() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->fill(*this);
}

}  // namespace qz
