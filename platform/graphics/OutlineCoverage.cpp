#include "platform/graphics/OutlineCoverage.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/graphics/Flattening.h"
#include "platform/graphics/PixelRows.h"

namespace qz {
namespace {

using Point = NSBezierPath::Point;

// Number of pixels summed at a time: 1 MiB, however large the mask.
constexpr int32_t kSumsMax = 1 << 18;
// Single precision still resolves 1/512 of a pixel here.
constexpr double kReachMax = 1 << 14;
// Points closer than this, in pixels, are merged.
constexpr double kSamePoint = 1.0 / 512;

/// Accumulates the areas to the right of lines, row by row. Each line adds to the pixels that it crosses the area to
/// its right, and to the following pixels the remainder; prefix sums from the left give the coverage.
///
/// Four rows are interleaved, pixel by pixel: each sum depends on the last, so rows are summed in parallel.
class AreaSums {
public:
    /// `sums` must be all zeros, and is so again once all rows have been covered; grows if too short.
    AreaSums(int32_t width, int32_t height, std::vector<float>& sums)
        : width_(width), height_(height), stride_(kRows * (static_cast<size_t>(width) + kColumns + 1)), sums_(sums) {
        const size_t needed = stride_ * ((static_cast<size_t>(height) + kRows - 1) / kRows);
        if (sums_.size() < needed) sums_.resize(needed);
    }

    void addLine(Point from, Point to) {
        if (from.y < to.y) {
            addDownward(from, to, 1);
        } else if (to.y < from.y) {
            addDownward(to, from, -1);
        }
    }

    static constexpr int32_t kRows = 4;
    static constexpr int32_t kColumns = 4;
    /// Writes the coverage of the four rows from `y`, a multiple of 4, and resets their sums to zero. Writes `width`
    /// bytes per row, padded to a multiple of `kColumns`.
    void coverRows(int32_t y, uint8_t* const (&coverage)[kRows]) {
        float* at = sums_.data() + stride_ * static_cast<size_t>(y / kRows);
        Sums sum{};
        for (int32_t x = 0; x < width_; x += kColumns, at += kRows * kColumns) {
            Levels levels{};
            for (int32_t i = 0; i < kColumns; ++i) {
                Sums added;
                std::memcpy(&added, at + kRows * i, sizeof added);
                sum += added;
                levels |=
                    levelsOf(sum) << (8 * i);  // the first of four bytes is the lowest, on a little-endian machine
            }
            std::fill_n(at, kRows * kColumns, 0.0f);
            for (int32_t i = 0; i < kRows; ++i) {
                const int32_t fourPixels = levels[i];
                std::memcpy(coverage[i] + x, &fourPixels, sizeof fourPixels);
            }
        }
        std::fill_n(at, stride_ - static_cast<size_t>(at - sums_.data()) % stride_, 0.0f);
    }

private:
    using Sums = float __attribute__((vector_size(kRows * sizeof(float))));
    using Levels = int32_t __attribute__((vector_size(kRows * sizeof(int32_t))));

    static Levels levelsOf(Sums sum) {
        const Sums size = sum < 0.0f ? -sum : sum;
        return __builtin_convertvector((size < 1.0f ? size : Sums{} + 1.0f) * 255.0f + 0.5f, Levels);
    }

    void addDownward(Point top, Point bottom, float sign) {
        const double slope = (bottom.x - top.x) / (bottom.y - top.y);
        if (top.y < 0) top = {top.x - top.y * slope, 0};
        if (bottom.y > height_) bottom = {bottom.x - (bottom.y - height_) * slope, double(height_)};
        if (!(top.y < bottom.y)) return;
        // A line left of the box is left of every pixel; a line right of it, of no pixel.
        if (std::max(top.x, bottom.x) <= 0) return addInside({0, top.y}, {0, bottom.y}, sign);
        if (std::min(top.x, bottom.x) >= width_) return;
        if (std::min(top.x, bottom.x) < 0) return addCut(top, bottom, 0, sign);
        if (std::max(top.x, bottom.x) > width_) return addCut(top, bottom, width_, sign);
        addInside(top, bottom, sign);
    }

    void addCut(Point top, Point bottom, double x, float sign) {
        const double y = std::clamp(top.y + (x - top.x) * (bottom.y - top.y) / (bottom.x - top.x), top.y, bottom.y);
        if (y > top.y) addDownward(top, {x, y}, sign);
        if (y < bottom.y) addDownward({x, y}, bottom, sign);
    }

    void addInside(Point top, Point bottom, float sign) {
        const auto slope = static_cast<float>((bottom.x - top.x) / (bottom.y - top.y));
        const float rise = std::fabs(1 / slope);  // used only if the line crosses several pixels of a row
        const auto y0 = static_cast<float>(top.y), y1 = static_cast<float>(bottom.y);
        const auto limit = static_cast<float>(width_);
        const auto first = static_cast<int32_t>(y0), last = std::min(height_, ceilingOf(y1));
        auto x = static_cast<float>(top.x);
        float* group = sums_.data() + stride_ * static_cast<size_t>(first / kRows);
        for (int32_t row = first; row < last; ++row) {
            const float height = std::min(static_cast<float>(row + 1), y1) - std::max(static_cast<float>(row), y0);
            const float next = std::min(std::max(x + slope * height, 0.0f), limit);
            addInRow(group + row % kRows, x, next, sign * height, sign * rise);
            x = next;
            if (row % kRows == kRows - 1) group += stride_;
        }
    }

    // Only for numbers that are not negative; the standard function is a call on baseline machines.
    static int32_t ceilingOf(float value) {
        const auto whole = static_cast<int32_t>(value);
        return whole + (static_cast<float>(whole) < value);
    }

    // Adds a line through one row, from x to next, as a trapezium over each pixel that it crosses; it falls by `rise`
    // over each.
    static void addInRow(float* sums, float x, float next, float height, float rise) {
        const float left = std::min(x, next), right = std::max(x, next);
        const auto first = static_cast<int32_t>(left);
        float* at = sums + kRows * first;
        const float inFirst = static_cast<float>(first + 1) - left;
        if (right <= static_cast<float>(first + 1)) {
            const float missing = height * (0.5f * (left + right) - static_cast<float>(first));
            at[0] += height - missing;
            at[kRows] += missing;
            return;
        }
        // The area that the line has added so far to this pixel and the following ones.
        float added = 0.5f * rise * inFirst * inFirst;
        at[0] += added;
        float reached = rise * inFirst;
        const int32_t end = ceilingOf(right);
        for (int32_t i = first + 1; i < end - 1; ++i) {
            at += kRows;
            const float covered = reached + 0.5f * rise;
            at[0] += covered - added;
            added = covered;
            reached += rise;
        }
        const float inLast = right - static_cast<float>(end - 1);
        const float covered = height - 0.5f * rise * inLast * inLast;
        at[kRows] += covered - added;
        at[2 * kRows] += height - covered;
    }

    const int32_t width_, height_;
    // Number of floats from one group of rows to the next.
    const size_t stride_;
    std::vector<float>& sums_;
};

using Contour = std::vector<Point>;

// Whether the points are closer than the areas can resolve.
bool isSame(Point a, Point b) {
    return std::fabs(a.x - b.x) < kSamePoint && std::fabs(a.y - b.y) < kSamePoint;
}

/// Turns a path into contours of lines, its origin moved to the box's corner.
class ContourMaker {
public:
    ContourMaker(double tolerance, const PixelRect& box) : tolerance_(tolerance), x_(box.x), y_(box.y) {}

    void moveTo(Point point) {
        contours_.emplace_back();
        lineTo(point);
    }
    void lineTo(Point point) { add(current_ = point); }
    void curveTo(Point control1, Point control2, Point end) {
        ends_.clear();
        appendFlattenedCurve(current_, control1, control2, end, tolerance_, ends_);
        for (const Point point : ends_) add(point);
        current_ = end;
    }
    // All contours are treated as closed.
    void close() {}

    /// Removes equal neighbours, including the last and the first.
    std::vector<Contour> finish() {
        for (Contour& contour : contours_)
            while (contour.size() > 1 && isSame(contour.front(), contour.back())) contour.pop_back();
        return std::move(contours_);
    }

private:
    void add(Point point) {
        Contour& contour = contours_.back();
        const Point moved{point.x - x_, point.y - y_};
        if (contour.empty() || !isSame(contour.back(), moved)) contour.push_back(moved);
    }

    const double tolerance_, x_, y_;
    std::vector<Contour> contours_;
    std::vector<Point> ends_;
    Point current_{0, 0};
};

std::vector<Contour> contoursOf(const DeviceShape& shape, const PixelRect& box) {
    ContourMaker maker(curveTolerance(shape.path().flatness()), box);
    shape.path().visit(maker);
    return maker.finish();
}

/// Makes the border on one side of a contour, at half the pen's width from it.
class BorderMaker {
public:
    explicit BorderMaker(const DevicePen& pen, double tolerance)
        : half_(pen.halfWidth),
          join_(pen.join),
          miterLimit_(pen.miterLimit),
          // The distance between an arc and its chord is r (1 - cos(angle / 2)).
          cosStep_(2 * std::pow(std::max(1 - tolerance / pen.halfWidth, 0.5), 2) - 1) {}

    /// The border to the left of its lines, looking along them with y upward.
    const Contour& borderOf(const Contour& contour) {
        border_.clear();
        const size_t count = contour.size();
        if (count < 2) return border_;
        sides_.clear();
        for (size_t i = 0; i < count; ++i) {
            const Point a = contour[i], b = contour[i + 1 == count ? 0 : i + 1];
            const double dx = b.x - a.x, dy = b.y - a.y, length = std::sqrt(dx * dx + dy * dy);
            sides_.push_back({{dx / length, dy / length}, length});
        }
        for (size_t i = 0; i < count; ++i) turn(contour[i], sides_[i == 0 ? count - 1 : i - 1], sides_[i]);
        return border_;
    }

private:
    struct Side {
        Point direction;
        double length;
    };

    void add(Point corner, double x, double y) { border_.push_back({corner.x + half_ * x, corner.y + half_ * y}); }

    void turn(Point corner, const Side& before, const Side& after) {
        const auto [ax, ay] = before.direction;
        const auto [bx, by] = after.direction;
        const double cross = ax * by - ay * bx, dot = ax * bx + ay * by;
        if (cross > 0) return turnInside(corner, before, after, cross, dot);
        add(corner, -ay, ax);
        if (join_ == NSLineJoinStyle::round && dot < cosStep_) addArc(corner, {-ay, ax}, std::atan2(cross, dot));
        // Miter length over line width is 1 / cos(turn / 2), and 2 cos^2(turn / 2) = 1 + cos(turn).
        if (join_ == NSLineJoinStyle::miter && 2 <= miterLimit_ * miterLimit_ * (1 + dot)) {
            add(corner, -(ay + by) / (1 + dot), (ax + bx) / (1 + dot));
        }
        add(corner, -by, bx);
    }

    // Where the border turns towards the contour, its lines meet; if they are too short for that, it passes through the
    // corner itself, so that it winds the same way as the lines' own strips.
    void turnInside(Point corner, const Side& before, const Side& after, double cross, double dot) {
        const auto [ax, ay] = before.direction;
        const auto [bx, by] = after.direction;
        const double cut = half_ * cross;
        if (2 * cut <= std::min(before.length, after.length) * (1 + dot)) {
            return add(corner, -(ay + by) / (1 + dot), (ax + bx) / (1 + dot));
        }
        add(corner, -ay, ax);
        border_.push_back(corner);
        add(corner, -by, bx);
    }

    // Adds points between the ends of an arc that begins at a normal; `angle` is negative.
    void addArc(Point corner, Point normal, double angle) {
        const auto steps = static_cast<int>(std::ceil(angle / -std::acos(cosStep_)));
        const double c = std::cos(angle / steps), s = std::sin(angle / steps);
        for (int i = 1; i < steps; ++i) {
            normal = {c * normal.x - s * normal.y, s * normal.x + c * normal.y};
            add(corner, normal.x, normal.y);
        }
    }

    const double half_;
    const NSLineJoinStyle join_;
    const double miterLimit_;
    const double cosStep_;
    std::vector<Side> sides_;
    Contour border_;
};

std::vector<Contour> bordersOf(std::vector<Contour> contours, const DevicePen& pen, double tolerance) {
    BorderMaker maker(pen, tolerance);
    std::vector<Contour> borders;
    for (Contour& contour : contours) {
        borders.push_back(maker.borderOf(contour));
        std::ranges::reverse(contour);
        borders.push_back(maker.borderOf(contour));
    }
    return borders;
}

bool isEven(const DevicePen& pen) {
    const NSAffineTransform& t = pen.circleToDevice;
    constexpr double kTolerance = 1e-6;
    return std::fabs(t.m11 * t.m21 + t.m12 * t.m22) < kTolerance &&
           std::fabs(t.m11 * t.m11 + t.m12 * t.m12 - t.m21 * t.m21 - t.m22 * t.m22) < kTolerance;
}

void addRows(const std::vector<Contour>& contours, int32_t first, int32_t count, bool isFirst, CoverageMask& mask) {
    // Kept from glyph to glyph, at little more than 1 MiB: allocating and clearing them again costs as much as filling
    // them.
    thread_local std::vector<float> zeros;
    const auto width = static_cast<size_t>(mask.box.width), stride = static_cast<size_t>(mask.stride);
    std::vector<uint8_t> spare(AreaSums::kRows * stride);
    AreaSums sums(mask.box.width, count, zeros);
    // Nothing may fail from here on, since the sums must end as zeros.
    for (const Contour& contour : contours) {
        for (size_t i = 0; i < contour.size(); ++i) {
            const Point from = contour[i], to = contour[i + 1 == contour.size() ? 0 : i + 1];
            sums.addLine({from.x, from.y - first}, {to.x, to.y - first});
        }
    }
    for (int32_t y = 0; y < count; y += AreaSums::kRows) {
        uint8_t* rows[AreaSums::kRows];
        for (int32_t i = 0; i < AreaSums::kRows; ++i) {
            const bool isDirect = isFirst && y + i < count;
            rows[i] = isDirect ? mask.row(first + y + i) : spare.data() + static_cast<size_t>(i) * stride;
        }
        sums.coverRows(y, rows);
        for (int32_t i = 0; i < AreaSums::kRows && y + i < count; ++i) {
            if (!isFirst) pixelRows().uniteCoverage(rows[i], width, mask.row(first + y + i));
            std::memset(mask.row(first + y + i) + width, 0, stride - width);
        }
    }
}

}  // namespace

bool isServedByAreas(const DeviceShape& shape, const PixelRect& box) {
    const DeviceBox& path = shape.pathBounds();
    return shape.isGlyphOutline() && !path.isEmpty() && (!shape.pen() || isEven(*shape.pen())) &&
           box.width <= kReachMax && path.minX >= box.x - kReachMax && path.minY >= box.y - kReachMax &&
           path.maxX <= static_cast<double>(box.right()) + kReachMax &&
           path.maxY <= static_cast<double>(box.bottom()) + kReachMax;
}

void addOutlineCoverage(const DeviceShape& shape, bool isFirst, CoverageMask& mask) {
    std::vector<Contour> contours = contoursOf(shape, mask.box);
    if (shape.pen()) {
        contours = bordersOf(std::move(contours), *shape.pen(), curveTolerance(shape.path().flatness()));
    }
    const int32_t rowsAtOnce = std::max(1, kSumsMax / mask.box.width);
    for (int32_t y = 0; y < mask.box.height; y += rowsAtOnce) {
        addRows(contours, y, std::min(rowsAtOnce, mask.box.height - y), isFirst, mask);
    }
}

}  // namespace qz
