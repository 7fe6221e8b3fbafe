#include "platform/text/ColourPaint.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qz {
namespace {

using Point = NSBezierPath::Point;

// Paint formats. All except these and the composite are followed by their variable form, which starts the same way.
enum Format {
    layers = 1,
    solid = 2,
    linear = 4,
    radial = 6,
    sweep = 8,
    glyphOutline = 10,
    colourGlyph = 11,
    matrix = 12,
    translation = 14,
    scale = 16,
    scaleAround = 18,
    evenScale = 20,
    evenScaleAround = 22,
    rotation = 24,
    rotationAround = 26,
    skew = 28,
    skewAround = 30,
    composite = 32
};

constexpr int plainFormOf(int format) {
    const bool isVariable =
        format > Format::layers && format < Format::composite && format % 2 == 1 && format != Format::colourGlyph;
    return isVariable ? format - 1 : format;
}

NSAffineTransform around(Point centre, NSAffineTransform transform) {
    transform.tX = centre.x - transform.m11 * centre.x - transform.m21 * centre.y;
    transform.tY = centre.y - transform.m12 * centre.x - transform.m22 * centre.y;
    return transform;
}

// The end of the colour line: colours run from p0 towards p1 and are constant along lines parallel to p0-p2, so only
// the component of p1 - p0 perpendicular to it counts.
Point endOfLine(Point p0, Point p1, Point p2) {
    const double x = -(p2.y - p0.y), y = p2.x - p0.x, square = x * x + y * y;
    if (square == 0) return p1;
    const double along = ((p1.x - p0.x) * x + (p1.y - p0.y) * y) / square;
    return {p0.x + along * x, p0.y + along * y};
}

}  // namespace

uint32_t ColourPaint::number(uint64_t offset, int bytes) const {
    if (offset + static_cast<uint64_t>(bytes) > table_.size()) return 0;
    uint32_t value = 0;
    for (int i = 0; i < bytes; ++i) value = value << 8 | table_[static_cast<size_t>(offset) + static_cast<size_t>(i)];
    return value;
}

double ColourPaint::signed16(uint64_t offset) const {
    return static_cast<int16_t>(number(offset, 2));
}

double ColourPaint::fixed16(uint64_t offset) const {
    return signed16(offset) / 16384;
}

double ColourPaint::fixed32(uint64_t offset) const {
    return static_cast<double>(static_cast<int32_t>(number(offset, 4))) / 65536;
}

Point ColourPaint::pointAt(uint64_t offset) const {
    return {signed16(offset), signed16(offset + 2)};
}

StraightColor ColourPaint::colorAt(uint64_t offset) const {
    StraightColor color = palette_(static_cast<uint16_t>(number(offset, 2)));
    color.alpha = static_cast<uint8_t>(std::lround(color.alpha * std::clamp(fixed16(offset + 2), 0.0, 1.0)));
    return color;
}

uint64_t ColourPaint::childOf(uint64_t paint, uint64_t offset) const {
    const uint32_t distance = number(paint + offset, 3);
    return distance == 0 ? 0 : paint + distance;
}

uint64_t ColourPaint::paintOfGlyph(uint32_t glyph) const {
    constexpr uint64_t kListOffset = 14, kCountBytes = 4, kRecordBytes = 6;
    const uint64_t list = number(kListOffset, 4);
    if (number(0, 2) < 1 || list == 0) return 0;
    // Records are sorted by glyph.
    for (uint64_t low = 0, high = number(list, 4); low < high;) {
        const uint64_t middle = (low + high) / 2, record = list + kCountBytes + kRecordBytes * middle;
        const uint32_t found = number(record, 2);
        if (found == glyph) return number(record + 2, 4) == 0 ? 0 : list + number(record + 2, 4);
        if (found < glyph)
            low = middle + 1;
        else
            high = middle;
    }
    return 0;
}

bool ColourPaint::walkGlyph(uint32_t glyph) {
    paintsLeft_ = kPaintsMax;
    silhouette_ = {};
    const uint64_t paint = paintOfGlyph(glyph);
    if (paint != 0) walk(paint, {}, 0);
    return paint != 0;
}

bool ColourPaint::paintGlyph(uint32_t glyph, PictureCanvas& canvas) {
    canvas_ = &canvas;
    return walkGlyph(glyph);
}

std::optional<NSBezierPath> ColourPaint::silhouetteOfGlyph(uint32_t glyph) {
    canvas_ = nullptr;
    if (!walkGlyph(glyph)) return std::nullopt;
    return std::move(silhouette_);
}

void ColourPaint::walk(uint64_t paint, const NSAffineTransform& toRoot, int depth) {
    if (paint == 0 || depth > kDepthMax || --paintsLeft_ < 0) return;
    const int format = plainFormOf(static_cast<int>(number(paint, 1)));
    switch (format) {
        case Format::layers:
            return walkLayers(paint, toRoot, depth);
        case Format::solid:
            if (canvas_) canvas_->paint(colorAt(paint + 1));
            return;
        case Format::glyphOutline:
            return walkOutline(paint, toRoot, depth);
        case Format::colourGlyph:
            return walk(paintOfGlyph(number(paint + 1, 2)), toRoot, depth + 1);
        case Format::composite:
            return walkComposite(paint, toRoot, depth);
        default:
            break;
    }
    if (const auto transform = transformOf(paint, format)) return walkTransformed(paint, *transform, toRoot, depth);
    if (!canvas_) return;
    if (const auto gradient = gradientOf(paint, format)) canvas_->paint(*gradient);
}

void ColourPaint::walkLayers(uint64_t paint, const NSAffineTransform& toRoot, int depth) {
    constexpr uint64_t kListOffset = 18, kCountBytes = 4;
    const uint64_t list = number(kListOffset, 4);
    const uint64_t count = number(paint + 1, 1), first = number(paint + 2, 4);
    if (list == 0 || first + count > number(list, 4)) return;
    for (uint64_t i = first; i < first + count; ++i) {
        const uint32_t distance = number(list + kCountBytes + 4 * i, 4);
        if (distance != 0) walk(list + distance, toRoot, depth + 1);
    }
}

void ColourPaint::walkOutline(uint64_t paint, const NSAffineTransform& toRoot, int depth) {
    NSBezierPath outline = outlines_(number(paint + 4, 2));
    if (!canvas_) {
        // The content is clipped to this outline, so it cannot extend further.
        outline.transformUsingAffineTransform(toRoot);
        const bool isMirrored = toRoot.m11 * toRoot.m22 < toRoot.m12 * toRoot.m21;
        return silhouette_.appendBezierPath(isMirrored ? outline.bezierPathByReversingPath() : outline);
    }
    canvas_->save();
    canvas_->clip(outline);
    walk(childOf(paint, 1), toRoot, depth + 1);
    canvas_->restore();
}

void ColourPaint::walkTransformed(uint64_t paint, const NSAffineTransform& transform, const NSAffineTransform& toRoot,
                                  int depth) {
    NSAffineTransform nested = toRoot;
    nested.prependTransform(transform);
    if (canvas_) {
        canvas_->save();
        canvas_->concat(transform);
    }
    walk(childOf(paint, 1), nested, depth + 1);
    if (canvas_) canvas_->restore();
}

void ColourPaint::walkComposite(uint64_t paint, const NSAffineTransform& toRoot, int depth) {
    const uint64_t source = childOf(paint, 1), backdrop = childOf(paint, 5);
    if (!canvas_) {
        walk(backdrop, toRoot, depth + 1);
        return walk(source, toRoot, depth + 1);
    }
    const uint32_t mode = number(paint + 4, 1);
    const bool isKnown = mode <= static_cast<uint32_t>(CompositeMode::luminosity);
    canvas_->beginGroup();
    walk(backdrop, toRoot, depth + 1);
    canvas_->beginGroup();
    walk(source, toRoot, depth + 1);
    canvas_->endGroup(isKnown ? static_cast<CompositeMode>(mode) : CompositeMode::sourceOver);
    canvas_->endGroup(CompositeMode::sourceOver);
}

std::optional<NSAffineTransform> ColourPaint::transformOf(uint64_t paint, int format) const {
    const uint64_t values = paint + 4;
    // Angles are stored as fractions of half a turn.
    const auto angle = [&](uint64_t offset) { return fixed16(offset) * std::numbers::pi; };
    switch (format) {
        case Format::matrix: {
            const uint64_t m = childOf(paint, 4);
            if (m == 0) return std::nullopt;
            return NSAffineTransform{.m11 = fixed32(m),
                                     .m12 = fixed32(m + 4),
                                     .m21 = fixed32(m + 8),
                                     .m22 = fixed32(m + 12),
                                     .tX = fixed32(m + 16),
                                     .tY = fixed32(m + 20)};
        }
        case Format::translation:
            return NSAffineTransform{.tX = signed16(values), .tY = signed16(values + 2)};
        case Format::scale:
        case Format::scaleAround: {
            const Point centre = format == Format::scale ? Point{0, 0} : pointAt(values + 4);
            return around(centre, {.m11 = fixed16(values), .m22 = fixed16(values + 2)});
        }
        case Format::evenScale:
        case Format::evenScaleAround: {
            const Point centre = format == Format::evenScale ? Point{0, 0} : pointAt(values + 2);
            return around(centre, {.m11 = fixed16(values), .m22 = fixed16(values)});
        }
        case Format::rotation:
        case Format::rotationAround: {
            const double c = std::cos(angle(values)), s = std::sin(angle(values));
            const Point centre = format == Format::rotation ? Point{0, 0} : pointAt(values + 2);
            return around(centre, {.m11 = c, .m12 = s, .m21 = -s, .m22 = c});
        }
        case Format::skew:
        case Format::skewAround: {
            const Point centre = format == Format::skew ? Point{0, 0} : pointAt(values + 4);
            return around(centre, {.m12 = std::tan(angle(values + 2)), .m21 = -std::tan(angle(values))});
        }
        default:
            return std::nullopt;
    }
}

std::optional<Gradient> ColourPaint::gradientOf(uint64_t paint, int format) const {
    const uint64_t line = childOf(paint, 1), values = paint + 4;
    if (line == 0) return std::nullopt;
    Gradient gradient;
    switch (format) {
        case Format::linear:
            gradient.start = pointAt(values);
            gradient.end = endOfLine(gradient.start, pointAt(values + 4), pointAt(values + 8));
            break;
        case Format::radial:
            gradient.kind = Gradient::Kind::radial;
            gradient.start = pointAt(values);
            gradient.startRadius = number(values + 4, 2);
            gradient.end = pointAt(values + 6);
            gradient.endRadius = number(values + 10, 2);
            break;
        case Format::sweep:
            gradient.kind = Gradient::Kind::sweep;
            gradient.start = pointAt(values);
            // These angles are stored minus half a turn, so that a full turn fits the format.
            gradient.startAngle = (fixed16(values + 4) + 1) * std::numbers::pi;
            gradient.endAngle = (fixed16(values + 6) + 1) * std::numbers::pi;
            break;
        default:
            return std::nullopt;
    }
    const uint32_t extend = number(line, 1), count = number(line + 1, 2);
    if (extend == 1) gradient.extend = Gradient::Extend::repeat;
    if (extend == 2) gradient.extend = Gradient::Extend::reflect;
    const bool isVariable = number(paint, 1) % 2 == 1;
    const uint64_t stopBytes = isVariable ? 10 : 6;
    for (uint64_t i = 0, stop = line + 3; i < count && stop + 6 <= table_.size(); ++i, stop += stopBytes) {
        gradient.stops.push_back({fixed16(stop), colorAt(stop + 2)});
    }
    std::ranges::stable_sort(gradient.stops, {}, &GradientStop::offset);
    return gradient;
}

}  // namespace qz
