#include "platform/text/ColourPaint.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qz {
namespace {

using Point = NSBezierPath::Point;

double fixed(FT_Fixed value) {
    return static_cast<double>(value) / 65536;
}

// Angles are kept as parts of half a turn.
double angleOf(FT_Fixed value) {
    return fixed(value) * std::numbers::pi;
}

Point pointOf(const FT_Vector& vector) {
    return {fixed(vector.x), fixed(vector.y)};
}

NSAffineTransform around(FT_Fixed x, FT_Fixed y, NSAffineTransform transform) {
    const double cx = fixed(x), cy = fixed(y);
    transform.tX = cx - transform.m11 * cx - transform.m21 * cy;
    transform.tY = cy - transform.m12 * cx - transform.m22 * cy;
    return transform;
}

NSAffineTransform transformOf(const FT_PaintTransform& paint) {
    const FT_Affine23& a = paint.affine;
    return {.m11 = fixed(a.xx),
            .m12 = fixed(a.yx),
            .m21 = fixed(a.xy),
            .m22 = fixed(a.yy),
            .tX = fixed(a.dx),
            .tY = fixed(a.dy)};
}

NSAffineTransform transformOf(const FT_PaintRotate& paint) {
    const double c = std::cos(angleOf(paint.angle)), s = std::sin(angleOf(paint.angle));
    return around(paint.center_x, paint.center_y, {.m11 = c, .m12 = s, .m21 = -s, .m22 = c});
}

NSAffineTransform transformOf(const FT_PaintSkew& paint) {
    return around(paint.center_x, paint.center_y,
                  {.m11 = 1,
                   .m12 = std::tan(angleOf(paint.y_skew_angle)),
                   .m21 = -std::tan(angleOf(paint.x_skew_angle)),
                   .m22 = 1});
}

// Colours run from p0 towards p1 and are the same along every line parallel to that from p0 to p2: the part of p1 - p0
// that is square to it.
Gradient gradientOf(const FT_PaintLinearGradient& paint) {
    const Point p0 = pointOf(paint.p0), p1 = pointOf(paint.p1), p2 = pointOf(paint.p2);
    const double x = -(p2.y - p0.y), y = p2.x - p0.x, square = x * x + y * y;
    Gradient gradient{.kind = Gradient::Kind::linear, .start = p0, .end = p1, .stops = {}};
    if (square == 0) return gradient;
    const double along = ((p1.x - p0.x) * x + (p1.y - p0.y) * y) / square;
    gradient.end = {p0.x + along * x, p0.y + along * y};
    return gradient;
}

Gradient gradientOf(const FT_PaintRadialGradient& paint) {
    return {.kind = Gradient::Kind::radial,
            .start = pointOf(paint.c0),
            .end = pointOf(paint.c1),
            .startRadius = fixed(paint.r0),
            .endRadius = fixed(paint.r1),
            .stops = {}};
}

// The table keeps these angles less half a turn, so that a whole one fits its numbers.
Gradient gradientOf(const FT_PaintSweepGradient& paint) {
    return {.kind = Gradient::Kind::sweep,
            .start = pointOf(paint.center),
            .startAngle = angleOf(paint.start_angle) + std::numbers::pi,
            .endAngle = angleOf(paint.end_angle) + std::numbers::pi,
            .stops = {}};
}

}  // namespace

bool ColourPaint::begin(uint32_t glyph) {
    paintsLeft_ = kPaintsMax;
    silhouette_ = {};
    FT_OpaquePaint root = {};
    if (!FT_Get_Color_Glyph_Paint(face_, glyph, FT_COLOR_NO_ROOT_TRANSFORM, &root)) return false;
    walk(root, {}, 0);
    return true;
}

bool ColourPaint::paintGlyph(uint32_t glyph, PictureCanvas& canvas) {
    canvas_ = &canvas;
    return begin(glyph);
}

std::optional<NSBezierPath> ColourPaint::silhouetteOfGlyph(uint32_t glyph) {
    canvas_ = nullptr;
    if (!begin(glyph)) return std::nullopt;
    return std::move(silhouette_);
}

void ColourPaint::walk(FT_OpaquePaint opaque, const NSAffineTransform& toRoot, int depth) {
    FT_COLR_Paint paint = {};
    if (depth > kDepthMax || --paintsLeft_ < 0 || !FT_Get_Paint(face_, opaque, &paint)) return;
    switch (paint.format) {
        case FT_COLR_PAINTFORMAT_COLR_LAYERS: {
            FT_OpaquePaint layer = {};
            while (FT_Get_Paint_Layers(face_, &paint.u.colr_layers.layer_iterator, &layer)) {
                walk(layer, toRoot, depth + 1);
            }
            return;
        }
        case FT_COLR_PAINTFORMAT_SOLID:
            if (canvas_) canvas_->paint(colorOf(paint.u.solid.color));
            return;
        case FT_COLR_PAINTFORMAT_LINEAR_GRADIENT:
            return this->paint(gradientOf(paint.u.linear_gradient), paint.u.linear_gradient.colorline);
        case FT_COLR_PAINTFORMAT_RADIAL_GRADIENT:
            return this->paint(gradientOf(paint.u.radial_gradient), paint.u.radial_gradient.colorline);
        case FT_COLR_PAINTFORMAT_SWEEP_GRADIENT:
            return this->paint(gradientOf(paint.u.sweep_gradient), paint.u.sweep_gradient.colorline);
        case FT_COLR_PAINTFORMAT_GLYPH:
            return walkOutline(paint.u.glyph, toRoot, depth);
        case FT_COLR_PAINTFORMAT_COLR_GLYPH: {
            FT_OpaquePaint root = {};
            const FT_UInt glyph = paint.u.colr_glyph.glyphID;
            if (FT_Get_Color_Glyph_Paint(face_, glyph, FT_COLOR_NO_ROOT_TRANSFORM, &root))
                walk(root, toRoot, depth + 1);
            return;
        }
        case FT_COLR_PAINTFORMAT_TRANSFORM:
            return walkTransformed(paint.u.transform.paint, transformOf(paint.u.transform), toRoot, depth);
        case FT_COLR_PAINTFORMAT_TRANSLATE:
            return walkTransformed(paint.u.translate.paint,
                                   {.tX = fixed(paint.u.translate.dx), .tY = fixed(paint.u.translate.dy)}, toRoot,
                                   depth);
        case FT_COLR_PAINTFORMAT_SCALE: {
            const FT_PaintScale& scale = paint.u.scale;
            return walkTransformed(
                scale.paint,
                around(scale.center_x, scale.center_y, {.m11 = fixed(scale.scale_x), .m22 = fixed(scale.scale_y)}),
                toRoot, depth);
        }
        case FT_COLR_PAINTFORMAT_ROTATE:
            return walkTransformed(paint.u.rotate.paint, transformOf(paint.u.rotate), toRoot, depth);
        case FT_COLR_PAINTFORMAT_SKEW:
            return walkTransformed(paint.u.skew.paint, transformOf(paint.u.skew), toRoot, depth);
        case FT_COLR_PAINTFORMAT_COMPOSITE:
            return walkComposite(paint.u.composite, toRoot, depth);
        default:
            return;
    }
}

void ColourPaint::walkTransformed(FT_OpaquePaint opaque, const NSAffineTransform& transform,
                                  const NSAffineTransform& toRoot, int depth) {
    NSAffineTransform nested = toRoot;
    nested.prependTransform(transform);
    if (canvas_) {
        canvas_->save();
        canvas_->concat(transform);
    }
    walk(opaque, nested, depth + 1);
    if (canvas_) canvas_->restore();
}

void ColourPaint::walkOutline(const FT_PaintGlyph& paint, const NSAffineTransform& toRoot, int depth) {
    NSBezierPath outline = outlines_(paint.glyphID);
    if (!canvas_) {
        // What lies inside is cut to this outline, so nothing of it reaches farther.
        outline.transformUsingAffineTransform(toRoot);
        const bool isMirrored = toRoot.m11 * toRoot.m22 < toRoot.m12 * toRoot.m21;
        return silhouette_.appendBezierPath(isMirrored ? outline.bezierPathByReversingPath() : outline);
    }
    canvas_->save();
    canvas_->clip(outline);
    walk(paint.paint, toRoot, depth + 1);
    canvas_->restore();
}

void ColourPaint::walkComposite(const FT_PaintComposite& paint, const NSAffineTransform& toRoot, int depth) {
    if (!canvas_) {
        walk(paint.backdrop_paint, toRoot, depth + 1);
        return walk(paint.source_paint, toRoot, depth + 1);
    }
    const auto mode = static_cast<size_t>(paint.composite_mode);
    const bool isKnown = mode <= static_cast<size_t>(CompositeMode::luminosity);
    canvas_->beginGroup();
    walk(paint.backdrop_paint, toRoot, depth + 1);
    canvas_->beginGroup();
    walk(paint.source_paint, toRoot, depth + 1);
    canvas_->endGroup(isKnown ? static_cast<CompositeMode>(mode) : CompositeMode::sourceOver);
    canvas_->endGroup(CompositeMode::sourceOver);
}

void ColourPaint::paint(Gradient gradient, FT_ColorLine& line) {
    if (!canvas_) return;
    FT_ColorStop stop = {};
    while (FT_Get_Colorline_Stops(face_, &stop, &line.color_stop_iterator)) {
        gradient.stops.push_back({static_cast<double>(stop.stop_offset) / 16384, colorOf(stop.color)});
    }
    if (gradient.stops.empty()) return;
    std::ranges::stable_sort(gradient.stops, {}, &GradientStop::offset);
    if (line.extend == FT_COLR_PAINT_EXTEND_REPEAT) gradient.extend = Gradient::Extend::repeat;
    if (line.extend == FT_COLR_PAINT_EXTEND_REFLECT) gradient.extend = Gradient::Extend::reflect;
    canvas_->paint(gradient);
}

StraightColor ColourPaint::colorOf(const FT_ColorIndex& index) const {
    StraightColor color = palette_(index.palette_index);
    const double alpha = std::clamp(static_cast<double>(index.alpha) / 16384, 0.0, 1.0);
    color.alpha = static_cast<uint8_t>(std::lround(color.alpha * alpha));
    return color;
}

}  // namespace qz
