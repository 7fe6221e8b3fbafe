#include "platform/graphics/SilhouetteTracing.h"

#include <cmath>
#include <utility>

namespace qz {
namespace {

using Point = NSBezierPath::Point;

constexpr double kLevel = 127.5;
// Points are omitted where the border is straight to within this many pixels.
constexpr double kStraightWithin = 0.02;

/// Follows the border across the edges between neighbouring samples. Samples are the centres of pixels, with a frame of
/// empty ones around them, so that every border is closed.
class Tracer {
public:
    explicit Tracer(const CoverageMask& mask)
        : mask_(mask),
          width_(mask.box.width + 2),
          height_(mask.box.height + 2),
          next_(2 * static_cast<size_t>(width_) * static_cast<size_t>(height_), kNone) {}

    NSBezierPath trace() {
        for (int32_t y = 0; y + 1 < height_; ++y) {
            for (int32_t x = 0; x + 1 < width_; ++x) linkCell(x, y);
        }
        NSBezierPath path;
        for (uint32_t edge = 0; edge < next_.size(); ++edge) {
            if (next_[edge] != kNone) appendBorder(path, edge);
        }
        return path;
    }

private:
    static constexpr uint32_t kNone = UINT32_MAX;

    int sample(int32_t x, int32_t y) const {
        const bool isInside = x > 0 && y > 0 && x + 1 < width_ && y + 1 < height_;
        return isInside ? mask_.row(y - 1)[x - 1] : 0;
    }
    bool isCovered(int32_t x, int32_t y) const { return sample(x, y) > kLevel; }

    // The edge from a sample to its right neighbour, and the edge to the sample below.
    uint32_t across(int32_t x, int32_t y) const { return 2 * static_cast<uint32_t>(y * width_ + x); }
    uint32_t down(int32_t x, int32_t y) const { return across(x, y) + 1; }

    // The border runs through a cell from edge to edge with the covered side on its left. Two opposite corners count as
    // separate.
    void linkCell(int32_t x, int32_t y) {
        const uint32_t top = across(x, y), bottom = across(x, y + 1), left = down(x, y), right = down(x + 1, y);
        const int corners =
            isCovered(x, y) | isCovered(x + 1, y) << 1 | isCovered(x + 1, y + 1) << 2 | isCovered(x, y + 1) << 3;
        switch (corners) {
            case 1:
                return link(top, left);
            case 2:
                return link(right, top);
            case 3:
                return link(right, left);
            case 4:
                return link(bottom, right);
            case 5:
                return link(top, left), link(bottom, right);
            case 6:
                return link(bottom, top);
            case 7:
                return link(bottom, left);
            case 8:
                return link(left, bottom);
            case 9:
                return link(top, bottom);
            case 10:
                return link(right, top), link(left, bottom);
            case 11:
                return link(right, bottom);
            case 12:
                return link(left, right);
            case 13:
                return link(top, right);
            case 14:
                return link(left, top);
            default:
                return;
        }
    }

    void link(uint32_t from, uint32_t to) { next_[from] = to; }

    // Sample (1, 1) is the centre of the first pixel, (0.5, 0.5).
    Point crossing(uint32_t edge) const {
        const auto x = static_cast<int32_t>(edge / 2) % width_, y = static_cast<int32_t>(edge / 2) / width_;
        const bool isDown = edge % 2 != 0;
        const double a = sample(x, y), b = isDown ? sample(x, y + 1) : sample(x + 1, y);
        const double t = (kLevel - a) / (b - a);
        return {x - 0.5 + (isDown ? 0 : t), y - 0.5 + (isDown ? t : 0)};
    }

    uint32_t taken(uint32_t edge) { return std::exchange(next_[edge], kNone); }

    void appendBorder(NSBezierPath& path, uint32_t start) {
        Point kept = crossing(start), last = kept;
        path.moveToPoint(kept);
        for (uint32_t edge = taken(start); edge != start; edge = taken(edge)) {
            const Point point = crossing(edge);
            if (last != kept && !isStraight(kept, last, point)) {
                path.lineToPoint(last);
                kept = last;
            }
            last = point;
        }
        if (last != kept) path.lineToPoint(last);
        path.closePath();
    }

    static bool isStraight(Point a, Point between, Point b) {
        const double dx = b.x - a.x, dy = b.y - a.y, length = std::hypot(dx, dy);
        const double aside = std::fabs((between.x - a.x) * dy - (between.y - a.y) * dx);
        return aside <= kStraightWithin * length;
    }

    const CoverageMask& mask_;
    const int32_t width_, height_;
    // For each edge that a border crosses, the next edge.
    std::vector<uint32_t> next_;
};

}  // namespace

NSBezierPath silhouetteOf(const CoverageMask& mask) {
    return mask.box.isEmpty() ? NSBezierPath() : Tracer(mask).trace();
}

}  // namespace qz
