#include "platform/graphics/PictureCanvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>

#include "platform/graphics/Cairo.h"

namespace qz {
namespace {

// The range of 16 bits before the point.
constexpr double kFixedMax = 32768;

// Number of sectors that approximate a continuous sweep of colour.
constexpr int kSweepSectors = 256;

constexpr std::array kOperators = {
    CAIRO_OPERATOR_CLEAR,      CAIRO_OPERATOR_SOURCE,
    CAIRO_OPERATOR_DEST,       CAIRO_OPERATOR_OVER,
    CAIRO_OPERATOR_DEST_OVER,  CAIRO_OPERATOR_IN,
    CAIRO_OPERATOR_DEST_IN,    CAIRO_OPERATOR_OUT,
    CAIRO_OPERATOR_DEST_OUT,   CAIRO_OPERATOR_ATOP,
    CAIRO_OPERATOR_DEST_ATOP,  CAIRO_OPERATOR_XOR,
    CAIRO_OPERATOR_ADD,        CAIRO_OPERATOR_SCREEN,
    CAIRO_OPERATOR_OVERLAY,    CAIRO_OPERATOR_DARKEN,
    CAIRO_OPERATOR_LIGHTEN,    CAIRO_OPERATOR_COLOR_DODGE,
    CAIRO_OPERATOR_COLOR_BURN, CAIRO_OPERATOR_HARD_LIGHT,
    CAIRO_OPERATOR_SOFT_LIGHT, CAIRO_OPERATOR_DIFFERENCE,
    CAIRO_OPERATOR_EXCLUSION,  CAIRO_OPERATOR_MULTIPLY,
    CAIRO_OPERATOR_HSL_HUE,    CAIRO_OPERATOR_HSL_SATURATION,
    CAIRO_OPERATOR_HSL_COLOR,  CAIRO_OPERATOR_HSL_LUMINOSITY,
};
static_assert(kOperators.size() == static_cast<size_t>(CompositeMode::luminosity) + 1);

struct Components {
    double red, green, blue, alpha;
};

Components componentsOf(StraightColor color) {
    return {color.red / 255.0, color.green / 255.0, color.blue / 255.0, color.alpha / 255.0};
}

// Cairo's pixels are words with alpha in the highest byte; ours are bytes. The reverse conversion is the same.
void swapRedAndBlue(const uint8_t* from, int32_t width, uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, from += 4, to += 4) {
        uint32_t pixel;
        std::memcpy(&pixel, from, sizeof pixel);
        pixel = (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
        std::memcpy(to, &pixel, sizeof pixel);
    }
}

// Cairo supports stops only from 0 to 1: shorten or extend the line to their range.
Gradient withStopsFromZeroToOne(Gradient gradient) {
    const double first = gradient.stops.front().offset, last = gradient.stops.back().offset;
    if (first == last) return gradient;
    const auto between = [](double a, double b, double t) { return a + (b - a) * t; };
    const Gradient old = gradient;
    gradient.start = {between(old.start.x, old.end.x, first), between(old.start.y, old.end.y, first)};
    gradient.end = {between(old.start.x, old.end.x, last), between(old.start.y, old.end.y, last)};
    gradient.startRadius = std::max(0.0, between(old.startRadius, old.endRadius, first));
    gradient.endRadius = std::max(0.0, between(old.startRadius, old.endRadius, last));
    for (GradientStop& stop : gradient.stops) stop.offset = (stop.offset - first) / (last - first);
    return gradient;
}

CairoPatternRef patternOf(const Gradient& given) {
    const Gradient gradient = withStopsFromZeroToOne(given);
    const auto [start, end] = std::pair(gradient.start, gradient.end);
    CairoPatternRef pattern(
        gradient.kind == Gradient::Kind::linear
            ? cairo_pattern_create_linear(start.x, start.y, end.x, end.y)
            : cairo_pattern_create_radial(start.x, start.y, gradient.startRadius, end.x, end.y, gradient.endRadius));
    for (const GradientStop& stop : gradient.stops) {
        const Components c = componentsOf(stop.color);
        cairo_pattern_add_color_stop_rgba(pattern.get(), stop.offset, c.red, c.green, c.blue, c.alpha);
    }
    constexpr cairo_extend_t kExtends[] = {CAIRO_EXTEND_PAD, CAIRO_EXTEND_REPEAT, CAIRO_EXTEND_REFLECT};
    cairo_pattern_set_extend(pattern.get(), kExtends[static_cast<size_t>(gradient.extend)]);
    return pattern;
}

// The colour at a position, which may lie beyond the stops.
Components colorAt(const Gradient& gradient, double place) {
    const double first = gradient.stops.front().offset, length = gradient.stops.back().offset - first;
    if (length > 0 && gradient.extend != Gradient::Extend::pad) {
        const double turns = (place - first) / length;
        const double whole = std::floor(turns);
        const bool isBackward = gradient.extend == Gradient::Extend::reflect && std::fmod(std::fabs(whole), 2) == 1;
        place = first + length * (isBackward ? 1 - (turns - whole) : turns - whole);
    }
    const auto next =
        std::ranges::upper_bound(gradient.stops, place, {}, [](const GradientStop& stop) { return stop.offset; });
    if (next == gradient.stops.begin()) return componentsOf(next->color);
    const GradientStop& before = *std::prev(next);
    if (next == gradient.stops.end()) return componentsOf(before.color);
    const double t = (place - before.offset) / (next->offset - before.offset);
    const Components a = componentsOf(before.color), b = componentsOf(next->color);
    const double alpha = a.alpha + (b.alpha - a.alpha) * t;
    if (alpha == 0) return {};
    const auto mixed = [&](double x, double y) { return (x * a.alpha * (1 - t) + y * b.alpha * t) / alpha; };
    return {mixed(a.red, b.red), mixed(a.green, b.green), mixed(a.blue, b.blue), alpha};
}

// A fan of sectors, each a mesh patch with the colours of its two sides.
CairoPatternRef sweepPatternOf(const Gradient& gradient, double reach) {
    CairoPatternRef pattern(cairo_pattern_create_mesh());
    const auto [x, y] = gradient.start;
    const double sector = 2 * std::numbers::pi / kSweepSectors, span = gradient.endAngle - gradient.startAngle;
    // Larger than the circle by as much as a chord falls inside it.
    const double radius = reach / std::cos(sector / 2);
    for (int i = 0; i < kSweepSectors; ++i) {
        const double from = i * sector, to = from + sector;
        cairo_mesh_pattern_begin_patch(pattern.get());
        cairo_mesh_pattern_move_to(pattern.get(), x, y);
        cairo_mesh_pattern_line_to(pattern.get(), x + radius * std::cos(from), y + radius * std::sin(from));
        cairo_mesh_pattern_line_to(pattern.get(), x + radius * std::cos(to), y + radius * std::sin(to));
        cairo_mesh_pattern_line_to(pattern.get(), x, y);
        for (unsigned corner = 0; corner < 4; ++corner) {
            const double angle = corner < 2 ? from : to;
            const Components c = colorAt(gradient, span == 0 ? angle - from : (angle - gradient.startAngle) / span);
            cairo_mesh_pattern_set_corner_color_rgba(pattern.get(), corner, c.red, c.green, c.blue, c.alpha);
        }
        cairo_mesh_pattern_end_patch(pattern.get());
    }
    return pattern;
}

}  // namespace

struct PictureCanvas::Surface {
    const PixelRect box;
    CairoSurfaceRef surface;
    CairoRef cairo;
};

PictureCanvas::PictureCanvas(const PixelRect& box) : surface_(std::make_unique<Surface>(Surface{box, {}, {}})) {
    surface_->surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, box.width, box.height));
    surface_->cairo.reset(cairo_create(surface_->surface.get()));
    cairo_translate(surface_->cairo.get(), -box.x, -box.y);
}

PictureCanvas::~PictureCanvas() = default;

void PictureCanvas::save() {
    cairo_save(surface_->cairo.get());
}

void PictureCanvas::restore() {
    cairo_restore(surface_->cairo.get());
}

void PictureCanvas::concat(const NSAffineTransform& t) {
    // After a matrix that it cannot invert, Cairo never draws again; an empty clip has the same effect until the next
    // restore.
    const double determinant = t.m11 * t.m22 - t.m12 * t.m21;
    if (!std::isfinite(determinant) || determinant == 0) return clip({});
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, t.m11, t.m12, t.m21, t.m22, t.tX, t.tY);
    cairo_transform(surface_->cairo.get(), &matrix);
}

void PictureCanvas::clip(const NSBezierPath& path) {
    cairo_t* const cairo = surface_->cairo.get();
    cairo_new_path(cairo);
    appendToCairo(cairo, path);
    cairo_clip(cairo);
}

bool PictureCanvas::setSource(const Paint& paint) {
    return std::visit([this](const auto& source) { return setSource(source); }, paint);
}

bool PictureCanvas::setSource(StraightColor color) {
    const Components c = componentsOf(color);
    cairo_set_source_rgba(surface_->cairo.get(), c.red, c.green, c.blue, c.alpha);
    return true;
}

bool PictureCanvas::setSource(const Gradient& gradient) {
    if (gradient.stops.empty()) return false;
    cairo_t* const cairo = surface_->cairo.get();
    CairoPatternRef pattern;
    if (gradient.kind == Gradient::Kind::sweep) {
        double left, top, right, bottom;
        cairo_clip_extents(cairo, &left, &top, &right, &bottom);
        const auto [x, y] = gradient.start;
        pattern = sweepPatternOf(gradient, std::hypot(std::max(std::fabs(left - x), std::fabs(right - x)),
                                                      std::max(std::fabs(top - y), std::fabs(bottom - y))));
    } else {
        pattern = patternOf(gradient);
    }
    cairo_set_source(cairo, pattern.get());
    return true;
}

bool PictureCanvas::setSource(const Ref<NSBitmapImageRep>& bitmap) {
    if (!bitmap) return false;
    cairo_t* const cairo = surface_->cairo.get();
    // Cairo reads pictures through the inverse matrix in fixed point, and reports an overflow as running out of memory.
    // Such a picture would be all but invisible.
    cairo_matrix_t toBitmap;
    cairo_get_matrix(cairo, &toBitmap);
    if (cairo_matrix_invert(&toBitmap) != CAIRO_STATUS_SUCCESS) return false;
    for (const double factor : {toBitmap.xx, toBitmap.xy, toBitmap.yx, toBitmap.yy})
        if (!(std::fabs(factor) < kFixedMax)) return false;
    const int32_t width = bitmap->pixelsWide(), height = bitmap->pixelsHigh();
    const CairoSurfaceRef source(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    uint8_t* const pixels = cairo_image_surface_get_data(source.get());
    if (!pixels) return false;
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(source.get()));
    cairo_surface_flush(source.get());
    for (int32_t y = 0; y < height; ++y)
        swapRedAndBlue(bitmap->row(y), width, pixels + static_cast<size_t>(y) * stride);
    cairo_surface_mark_dirty(source.get());
    cairo_set_source_surface(cairo, source.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_GOOD);
    return true;
}

void PictureCanvas::paint(const Paint& paint) {
    if (setSource(paint)) cairo_paint(surface_->cairo.get());
}

void PictureCanvas::paint(const Paint& paint, const CoverageMask& coverage, int32_t dx, int32_t dy) {
    cairo_t* const cairo = surface_->cairo.get();
    if (coverage.box.isEmpty() || !setSource(paint)) return;
    // Cairo only reads the mask. A source keeps its place when the matrix changes later.
    const CairoSurfaceRef mask(cairo_image_surface_create_for_data(const_cast<uint8_t*>(coverage.bytes.data()),
                                                                   CAIRO_FORMAT_A8, coverage.box.width,
                                                                   coverage.box.height, coverage.stride));
    const PixelRect& box = surface_->box;
    save();
    cairo_identity_matrix(cairo);
    cairo_mask_surface(cairo, mask.get(), double(coverage.box.x) + dx - box.x, double(coverage.box.y) + dy - box.y);
    restore();
}

void PictureCanvas::beginGroup() {
    cairo_push_group(surface_->cairo.get());
}

void PictureCanvas::endGroup(CompositeMode mode) {
    cairo_t* const cairo = surface_->cairo.get();
    cairo_pop_group_to_source(cairo);
    cairo_set_operator(cairo, kOperators[static_cast<size_t>(mode)]);
    cairo_paint(cairo);
    cairo_set_operator(cairo, CAIRO_OPERATOR_OVER);
}

Ref<NSBitmapImageRep> PictureCanvas::picture() const {
    if (cairo_status(surface_->cairo.get()) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    cairo_surface_t* const surface = surface_->surface.get();
    cairo_surface_flush(surface);
    const uint8_t* const pixels = cairo_image_surface_get_data(surface);
    if (!pixels) return {};
    const int32_t width = cairo_image_surface_get_width(surface), height = cairo_image_surface_get_height(surface);
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface));
    auto picture = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = width, .pixelsHigh = height});
    if (!picture) return {};
    for (int32_t y = 0; y < height; ++y)
        swapRedAndBlue(pixels + static_cast<size_t>(y) * stride, width, picture->row(y));
    return picture;
}

}  // namespace qz
