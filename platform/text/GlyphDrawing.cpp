#include "platform/text/GlyphDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <span>

#include "platform/graphics/DeviceShape.h"
#include "platform/graphics/PixelRect.h"
#include "platform/text/ColourGlyphs.h"
#include "platform/text/FontFace.h"
#include "platform/text/GlyphImage.h"

namespace qz {
namespace {

constexpr int32_t kPhases = 8;
// No bitmap is that wide, so nothing beyond is visible, and its phases fit in 32 bits.
constexpr double kFarthest = 1 << 27;
// Glyphs with a longer side or larger area, in pixels, are not cached but drawn each time, clipped to the bitmap.
constexpr int32_t kKeptSideMax = 2048;
constexpr int64_t kKeptAreaMax = 1 << 20;
constexpr size_t kLookedUpAtOnce = 32;
// Prefetch distance in glyphs, and the number of bytes to prefetch; the processor prefetches the rest of a sequential
// read.
constexpr size_t kFetchedAhead = 2, kPrefetchedMax = 1024, kCacheLine = 64;
constexpr PixelRect kAnyPixels{-(1 << 29), -(1 << 29), 1 << 30, 1 << 30};

bool isDrawable(const GlyphAtPlace& glyph) {
    return glyph.glyph != NSControlGlyph && glyph.font;
}

/// The pixel of a glyph's origin, and the position in it.
struct Place {
    int32_t x, y;
    uint8_t phaseX, phaseY;
};

std::optional<Place> placeOf(NSPoint origin, const NSAffineTransform& t) {
    const double x = t.m11 * origin.x + t.m21 * origin.y + t.tX;
    const double y = t.m12 * origin.x + t.m22 * origin.y + t.tY;
    if (!(std::fabs(x) < kFarthest && std::fabs(y) < kFarthest)) return std::nullopt;
    const auto phases = [](double value) { return static_cast<int32_t>(std::floor(value * kPhases + 0.5)); };
    const int32_t px = phases(x), py = phases(y);
    return Place{px >> 3, py >> 3, static_cast<uint8_t>(px & (kPhases - 1)), static_cast<uint8_t>(py & (kPhases - 1))};
}

/// The common part of the keys of glyphs that are drawn the same way.
GlyphKey sharedKeyOf(const NSGraphicsContext& context, GlyphPart part) {
    const NSAffineTransform& t = context.transform();
    GlyphKey key;
    key.m11 = t.m11;
    key.m12 = t.m12;
    key.m21 = t.m21;
    key.m22 = t.m22;
    key.part = part;
    key.antialias = context.shouldAntialias();
    return key;
}

GlyphKey keyOf(GlyphKey shared, const GlyphAtPlace& glyph, const Place& place) {
    shared.face = &glyph.font->face();
    shared.glyph = glyph.glyph;
    shared.pointSize = glyph.font->pointSize();
    shared.obliqueness = glyph.obliqueness;
    shared.phaseX = place.phaseX;
    shared.phaseY = place.phaseY;
    return shared;
}

/// Maps points, relative to the glyph's origin and y downward, to pixels with the origin in pixel (0, 0).
NSAffineTransform toPixels(const GlyphKey& key) {
    return {.m11 = key.m11,
            .m12 = key.m12,
            .m21 = key.m21,
            .m22 = key.m22,
            .tX = static_cast<double>(key.phaseX) / kPhases,
            .tY = static_cast<double>(key.phaseY) / kPhases};
}

// Outlines have y upward, the drawing space y downward.
NSAffineTransform upright(float obliqueness) {
    return {.m21 = obliqueness, .m22 = -1};
}

NSBezierPath outlineOf(const GlyphAtPlace& glyph) {
    const FontFace& face = glyph.font->face();
    const double scale = glyph.font->pointSize() / face.unitsPerEm();
    NSAffineTransform transform = upright(glyph.obliqueness);
    transform.prependTransform({.m11 = scale, .m22 = scale});
    NSBezierPath path = *face.outlineOfGlyph(glyph.glyph);
    path.transformUsingAffineTransform(transform);
    return path;
}

DeviceShape shapeOf(const GlyphAtPlace& glyph, const GlyphKey& key) {
    NSBezierPath outline = outlineOf(glyph);
    if (key.part != GlyphPart::stroke) return DeviceShape::fillOfGlyph(outline, toPixels(key));
    // Flatten first, so that the requested flatness applies to the joins; in points, and finer by the scale.
    const double scale = std::max(std::hypot(key.m11, key.m12), std::hypot(key.m21, key.m22));
    if (scale > 1) outline.setFlatness(outline.flatness() / static_cast<float>(scale));
    outline = outline.bezierPathByFlatteningPath();
    outline.setLineWidth(key.strokeWidth);
    outline.setLineCapStyle(static_cast<NSLineCapStyle>(key.lineCap));
    outline.setLineJoinStyle(static_cast<NSLineJoinStyle>(key.lineJoin));
    outline.setMiterLimit(key.miterLimit);
    outline.setFlatness(key.flatness);
    return DeviceShape::strokeOfGlyph(outline, toPixels(key));
}

bool isWorthKeeping(const PixelRect& box, uint64_t bytesPerPixel, const GlyphCache& cache) {
    const int64_t area = int64_t{box.width} * box.height;
    return std::max(box.width, box.height) <= kKeptSideMax && area <= kKeptAreaMax &&
           cache.hasRoomFor(static_cast<uint64_t>(area) * bytesPerPixel);
}

bool isVisible(const PixelRect& box, const Place& place, const NSGraphicsContext& context) {
    return !intersectionOfMoved(box, place.x, place.y, context.bitmap()->bounds()).isEmpty();
}

GlyphKey partOf(GlyphKey key, GlyphPart part) {
    key.part = part;
    key.alpha = 255;
    if (part == GlyphPart::fill) key.strokeWidth = key.flatness = key.miterLimit = key.lineCap = key.lineJoin = 0;
    return key;
}

/// The shapes whose union is a part.
std::vector<DeviceShape> shapesOf(const GlyphAtPlace& glyph, const GlyphKey& key) {
    if (key.part == GlyphPart::fill || key.part == GlyphPart::stroke) return {shapeOf(glyph, key)};
    return {shapeOf(glyph, partOf(key, GlyphPart::stroke)), shapeOf(glyph, partOf(key, GlyphPart::fill))};
}

void thin(std::vector<uint8_t>& bytes, uint8_t alpha) {
    if (alpha == 255) return;
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>((byte * alpha + 127) / 255);
}

/// Writes the mask with an opacity of `alpha` of 255 into an empty target that contains it.
void layThinned(const CoverageMask& mask, uint8_t alpha, CoverageMask& target) {
    const auto width = static_cast<size_t>(mask.box.width);
    for (int32_t y = 0; y < mask.box.height; ++y) {
        std::memcpy(target.row(mask.box.y - target.box.y + y) + (mask.box.x - target.box.x), mask.row(y), width);
    }
    thin(target.bytes, alpha);
}

void uniteThinned(const CoverageMask& mask, uint8_t alpha, CoverageMask& target) {
    if (alpha == 255) {
        uniteMasks(mask, 0, 0, target);
        return;
    }
    CoverageMask thinned = mask;
    thin(thinned.bytes, alpha);
    uniteMasks(thinned, 0, 0, target);
}

/// Makes the mask of a part from the masks of its components, which are cached too: the stroke and fill of one glyph
/// are used for an outline, a shadow and the glyph itself.
CoverageMask maskOf(const GlyphAtPlace& glyph, const GlyphKey& key, const std::vector<DeviceShape>& shapes,
                    const PixelRect& box, GlyphCache& cache) {
    CoverageMask mask;
    if (shapes.size() == 1) {
        renderCoverage(shapes, box, key.antialias, mask);
        return mask;
    }
    mask = CoverageMask::emptyOf(box);
    for (size_t i = 0; i < shapes.size(); ++i) {
        const auto lay = i == 0 ? layThinned : uniteThinned;
        const GlyphKey partKey = partOf(key, i == 0 ? GlyphPart::stroke : GlyphPart::fill);
        if (const GlyphImage* const kept = cache.find(partKey)) {
            lay(kept->mask, key.alpha, mask);
            continue;
        }
        GlyphImage part{.font = glyph.font, .mask = {}, .picture = {}};
        renderCoverage({&shapes[i], 1}, shapes[i].pixelBounds(kAnyPixels), key.antialias, part.mask);
        lay(part.mask, key.alpha, mask);
        cache.add(partKey, std::move(part));
    }
    return mask;
}

bool holdsAlpha(const GlyphKey& key) {
    return key.part == GlyphPart::strokeThenFill;
}

/// Draws and caches the combination of two cached parts, as a second layer finds them; returns false if they cannot be
/// used.
bool drawFromKeptParts(NSGraphicsContext& context, const GlyphAtPlace& glyph, const Place& place, const GlyphKey& key,
                       GlyphCache& cache) {
    if (key.part == GlyphPart::fill || key.part == GlyphPart::stroke) return false;
    const GlyphImage* const stroke = cache.find(partOf(key, GlyphPart::stroke));
    const GlyphImage* const fill = stroke ? cache.find(partOf(key, GlyphPart::fill)) : nullptr;
    if (!fill) return false;
    const PixelRect box = unionOf(stroke->mask.box, fill->mask.box);
    if (!isVisible(box, place, context) || !isWorthKeeping(box, 1, cache)) return false;
    GlyphImage image{.font = glyph.font, .mask = CoverageMask::emptyOf(box), .picture = {}};
    layThinned(stroke->mask, key.alpha, image.mask);
    uniteThinned(fill->mask, key.alpha, image.mask);
    context.drawMask(image.mask, place.x, place.y, holdsAlpha(key));
    cache.add(key, std::move(image));
    return true;
}

void drawNew(NSGraphicsContext& context, const GlyphAtPlace& glyph, const Place& place, const GlyphKey& key,
             GlyphCache& cache) {
    if (drawFromKeptParts(context, glyph, place, key, cache)) return;
    const std::vector<DeviceShape> shapes = shapesOf(glyph, key);
    PixelRect box;
    for (const DeviceShape& shape : shapes) box = unionOf(box, shape.pixelBounds(kAnyPixels));
    if (!box.isEmpty() && !isVisible(box, place, context)) return;
    if (!isWorthKeeping(box, 1, cache)) {
        if (!holdsAlpha(key)) return context.drawShapes(shapes, place.x, place.y);
        for (const DeviceShape& shape : shapes) context.drawShapes({&shape, 1}, place.x, place.y);
        return;
    }
    GlyphImage image{.font = glyph.font, .mask = maskOf(glyph, key, shapes, box, cache), .picture = {}};
    context.drawMask(image.mask, place.x, place.y, holdsAlpha(key));
    cache.add(key, std::move(image));
}

/// A glyph at its place, with its image if cached.
struct Lookup {
    const GlyphAtPlace* glyph;
    Place place;
    const GlyphImage* image;
};

void prefetch(const CoverageMask& mask) {
    const size_t bytes = std::min(mask.bytes.size(), kPrefetchedMax);
    for (size_t i = 0; i < bytes; i += kCacheLine) __builtin_prefetch(mask.bytes.data() + i);
}

/// Draws a part of each glyph. A page's masks exceed the nearest cache: look up several at a time, so that the
/// processor waits for them together, and prefetch them while others are blended.
void drawParts(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, const GlyphKey& shared,
               GlyphCache& cache) {
    if (!context.paint()) return;
    std::array<Lookup, kLookedUpAtOnce> lookups;
    for (size_t next = 0; next < glyphs.size();) {
        size_t count = 0;
        // Up to the first that is not cached: adding it may evict those already found.
        for (bool isKept = true; isKept && count < lookups.size() && next < glyphs.size(); ++next) {
            const GlyphAtPlace& glyph = glyphs[next];
            if (!isDrawable(glyph)) continue;
            const std::optional<Place> place = placeOf(glyph.origin, context.transform());
            if (!place) continue;
            const GlyphImage* const image = cache.find(keyOf(shared, glyph, *place));
            lookups[count++] = {&glyph, *place, image};
            isKept = image != nullptr;
        }
        for (size_t i = 0; i < count; ++i) {
            const auto& [glyph, place, image] = lookups[i];
            if (i + kFetchedAhead < count && lookups[i + kFetchedAhead].image) {
                prefetch(lookups[i + kFetchedAhead].image->mask);
            }
            if (image) {
                context.drawMask(image->mask, place.x, place.y, holdsAlpha(shared));
            } else {
                drawNew(context, *glyph, place, keyOf(shared, *glyph, place), cache);
            }
        }
    }
}

/// Draws a colour glyph's picture; returns false if the glyph has none.
bool drawPicture(NSGraphicsContext& context, const GlyphAtPlace& glyph, const Place& place, GlyphCache& cache) {
    const ColourGlyphs* const colours = glyph.font->face().colourGlyphs();
    if (!colours) return false;
    const StraightColor color = mainColorOf(*context.paint()), foreground{color.red, color.green, color.blue, 255};
    GlyphKey key = keyOf(sharedKeyOf(context, GlyphPart::picture), glyph, place);
    key.antialias = true;
    key.red = foreground.red;
    key.green = foreground.green;
    key.blue = foreground.blue;
    const auto draw = [&](const NSBitmapImageRep& picture, const PixelRect& box) {
        context.drawBitmap(picture, place.x + box.x, place.y + box.y, color.alpha);
    };
    if (const GlyphImage* const kept = cache.find(key)) {
        if (kept->picture) draw(*kept->picture, kept->mask.box);
        return kept->picture != nullptr;
    }

    const double scale = glyph.font->pointSize() / glyph.font->face().unitsPerEm();
    NSAffineTransform transform = toPixels(key);
    transform.prependTransform(upright(glyph.obliqueness));
    transform.prependTransform({.m11 = scale, .m22 = scale});
    const PixelRect box = colours->bounds(glyph.glyph, transform).pixels(kAnyPixels);
    if (box.isEmpty()) {
        // Cache the absence of a picture, so that the font is not queried again.
        cache.add(key, {.font = glyph.font, .mask = {}, .picture = {}});
        return false;
    }
    if (!isVisible(box, place, context)) return true;
    const bool isKept = isWorthKeeping(box, 4, cache);
    const PixelRect shown = isKept ? box : intersectionOfMoved(context.bitmap()->bounds(), -place.x, -place.y, box);
    GlyphImage image{.font = glyph.font,
                     .mask = {.box = shown, .stride = 0, .bytes = {}},
                     .picture = colours->picture(glyph.glyph, transform, foreground, shown)};
    if (!image.picture) return false;
    draw(*image.picture, shown);
    if (isKept) cache.add(key, std::move(image));
    return true;
}

}  // namespace

NSBezierPath outlineOfGlyph(const GlyphAtPlace& place) {
    if (place.glyph == NSControlGlyph || !place.font) return {};
    NSBezierPath path = outlineOf(place);
    path.transformUsingAffineTransform({.tX = place.origin.x, .tY = place.origin.y});
    return path;
}

void drawGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, GlyphCache& cache) {
    if (!context.paint()) return;
    const auto hasPictures = [](const GlyphAtPlace& glyph) {
        return isDrawable(glyph) && glyph.font->face().colourGlyphs();
    };
    while (!glyphs.empty()) {
        const auto plain = static_cast<size_t>(std::ranges::find_if(glyphs, hasPictures) - glyphs.begin());
        fillGlyphs(context, glyphs.first(plain), cache);
        glyphs = glyphs.subspan(plain);
        if (glyphs.empty()) return;
        const std::optional<Place> place = placeOf(glyphs.front().origin, context.transform());
        if (place && !drawPicture(context, glyphs.front(), *place, cache)) fillGlyphs(context, glyphs.first(1), cache);
        glyphs = glyphs.subspan(1);
    }
}

void fillGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, GlyphCache& cache) {
    drawParts(context, glyphs, sharedKeyOf(context, GlyphPart::fill), cache);
}

void strokeAndFillGlyphs(NSGraphicsContext& context, std::span<const GlyphAtPlace> glyphs, const GlyphStroke& stroke,
                         GlyphCache& cache) {
    if (!context.paint()) return;
    GlyphKey shared = sharedKeyOf(context, GlyphPart::strokeAndFill);
    shared.strokeWidth = stroke.width;
    shared.flatness = stroke.flatness;
    shared.miterLimit = stroke.miterLimit;
    shared.lineCap = static_cast<uint8_t>(stroke.lineCap);
    shared.lineJoin = static_cast<uint8_t>(stroke.lineJoin);
    // In an opaque colour, in several colours, or when gathered, stroke and fill combine as in one mask.
    const auto* const color = std::get_if<StraightColor>(&*context.paint());
    if (color && color->alpha != 255 && !context.isGathering()) {
        shared.part = GlyphPart::strokeThenFill;
        shared.alpha = color->alpha;
    }
    drawParts(context, glyphs, shared, cache);
}

}  // namespace qz
