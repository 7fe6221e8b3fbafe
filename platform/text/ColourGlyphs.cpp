#include "platform/text/ColourGlyphs.h"

#include <cmath>
#include <cstring>
#include <mutex>
#include <optional>
#include <vector>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_COLOR_H
#include FT_TRUETYPE_TABLES_H

#include "platform/graphics/SilhouetteTracing.h"
#include "platform/text/ColourPaint.h"
#include "platform/text/GlyphOutline.h"

namespace qz {
namespace {

constexpr uint16_t kForegroundIndex = 0xFFFF;

/// A bitmap glyph and its place: `fromPixels` maps its pixels, y downward, to font units.
struct BitmapGlyph {
    Ref<NSBitmapImageRep> bitmap;
    NSAffineTransform fromPixels;
};

// Blue, green, red, alpha, premultiplied.
Ref<NSBitmapImageRep> bitmapOf(const FT_Bitmap& source) {
    if (source.pixel_mode != FT_PIXEL_MODE_BGRA || source.width == 0 || source.rows == 0) return {};
    auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = static_cast<int32_t>(source.width), .pixelsHigh = static_cast<int32_t>(source.rows)});
    for (uint32_t y = 0; bitmap && y < source.rows; ++y) {
        const uint8_t* from = source.buffer + static_cast<std::ptrdiff_t>(y) * source.pitch;
        uint8_t* to = bitmap->row(static_cast<int32_t>(y));
        for (uint32_t x = 0; x < source.width; ++x, from += 4, to += 4) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
            to[3] = from[3];
        }
    }
    return bitmap;
}

CoverageMask alphaOf(const NSBitmapImageRep& bitmap) {
    CoverageMask mask = CoverageMask::emptyOf(bitmap.bounds());
    for (int32_t y = 0; y < mask.box.height; ++y) {
        for (int32_t x = 0; x < mask.box.width; ++x) mask.row(y)[x] = bitmap.row(y)[4 * x + 3];
    }
    return mask;
}

// The length of the longer transformed unit vector.
double scaleOf(const NSAffineTransform& t) {
    return std::max(std::hypot(t.m11, t.m12), std::hypot(t.m21, t.m22));
}

}  // namespace

/// The FreeType font, opened for the first glyph.
class ColourGlyphs::Source {
public:
    Source(std::span<const uint8_t> file, int index, double unitsPerEm)
        : file_(file), index_(index), unitsPerEm_(unitsPerEm) {}
    ~Source() {
        if (library_) FT_Done_FreeType(library_);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    bool hasGlyph(NSGlyph glyph) {
        const std::lock_guard lock(mutex_);
        return open() && (paints({}).hasGlyph(glyph) || hasLayers(glyph) || bitmapGlyph(glyph, INFINITY).bitmap);
    }

    NSBezierPath silhouette(NSGlyph glyph) {
        const std::lock_guard lock(mutex_);
        if (!open()) return {};
        if (auto outlines = paintedOutlines(glyph)) return std::move(*outlines);
        const BitmapGlyph found = bitmapGlyph(glyph, INFINITY);
        if (!found.bitmap) return {};
        NSBezierPath path = silhouetteOf(alphaOf(*found.bitmap));
        path.transformUsingAffineTransform(found.fromPixels);
        return path;
    }

    DeviceBox bounds(NSGlyph glyph, NSAffineTransform toDevice) {
        const std::lock_guard lock(mutex_);
        if (!open()) return {};
        std::optional<NSBezierPath> shown = paintedOutlines(glyph);
        if (!shown) {
            // A picture may fade out beyond its silhouette.
            const BitmapGlyph found = bitmapGlyph(glyph, scaleOf(toDevice) * unitsPerEm_);
            if (!found.bitmap) return {};
            shown = NSBezierPath::bezierPathWithRect({{0, 0}, found.bitmap->size()});
            toDevice.prependTransform(found.fromPixels);
        }
        return DeviceShape::fillOf(*shown, toDevice).pathBounds();
    }

    Ref<NSBitmapImageRep> picture(NSGlyph glyph, const NSAffineTransform& toDevice, StraightColor foreground,
                                  const PixelRect& box) {
        const std::lock_guard lock(mutex_);
        if (!open() || box.isEmpty()) return {};
        PictureCanvas canvas(box);
        canvas.concat(toDevice);
        if (!paints(foreground).paintGlyph(glyph, canvas) && !paintLayers(glyph, foreground, canvas)) {
            const BitmapGlyph found = bitmapGlyph(glyph, scaleOf(toDevice) * unitsPerEm_);
            if (!found.bitmap) return {};
            canvas.concat(found.fromPixels);
            canvas.paint(found.bitmap);
        }
        return canvas.picture();
    }

private:
    bool open() {
        if (isOpened_) return face_ != nullptr;
        const auto size = static_cast<FT_Long>(file_.size());
        // The library may exist already if memory ran out after it was made.
        const bool isFont = (library_ || succeeded(FT_Init_FreeType(&library_))) &&
                            succeeded(FT_New_Memory_Face(library_, file_.data(), size, index_, &face_));
        isOpened_ = true;
        if (!isFont) return false;
        if (FT_Palette_Data data; FT_Palette_Data_Get(face_, &data) == 0) paletteSize_ = data.num_palette_entries;
        if (FT_Palette_Select(face_, 0, &palette_) != 0) palette_ = nullptr;
        FT_ULong length = 0;
        if (FT_Load_Sfnt_Table(face_, FT_MAKE_TAG('C', 'O', 'L', 'R'), 0, nullptr, &length) == 0) {
            colrTable_.resize(length);
            FT_Load_Sfnt_Table(face_, FT_MAKE_TAG('C', 'O', 'L', 'R'), 0, colrTable_.data(), &length);
        }
        return true;
    }

    StraightColor colorAt(uint32_t index, StraightColor foreground) const {
        if (index == kForegroundIndex) return {foreground.red, foreground.green, foreground.blue, 255};
        if (!palette_ || index >= paletteSize_) return {0, 0, 0, 0};
        const FT_Color& color = palette_[index];
        return {color.red, color.green, color.blue, color.alpha};
    }

    NSBezierPath outlineOf(uint32_t glyph) {
        constexpr FT_Int32 flags = FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;
        if (!FT_IS_SCALABLE(face_) || !succeeded(FT_Load_Glyph(face_, glyph, flags))) return {};
        if (face_->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return {};
        return pathOfOutline(face_->glyph->outline);
    }

    ColourPaint paints(StraightColor foreground) {
        return {colrTable_, [this, foreground](uint16_t index) { return colorAt(index, foreground); },
                [this](uint32_t glyph) { return outlineOf(glyph); }};
    }

    struct Layer {
        FT_UInt glyph, color;
    };
    std::vector<Layer> layersOf(NSGlyph glyph) const {
        std::vector<Layer> layers;
        FT_LayerIterator iterator = {};
        for (Layer layer; FT_Get_Color_Glyph_Layer(face_, glyph, &layer.glyph, &layer.color, &iterator);) {
            layers.push_back(layer);
        }
        return layers;
    }
    bool hasLayers(NSGlyph glyph) const { return !layersOf(glyph).empty(); }

    // No value if the glyph has neither paints nor layers.
    std::optional<NSBezierPath> paintedOutlines(NSGlyph glyph) {
        if (auto outlines = paints({}).silhouetteOfGlyph(glyph)) return outlines;
        if (!hasLayers(glyph)) return std::nullopt;
        NSBezierPath path;
        for (const Layer& layer : layersOf(glyph)) path.appendBezierPath(outlineOf(layer.glyph));
        return path;
    }

    bool paintLayers(NSGlyph glyph, StraightColor foreground, PictureCanvas& canvas) {
        const std::vector<Layer> layers = layersOf(glyph);
        for (const Layer& layer : layers) {
            canvas.save();
            canvas.clip(outlineOf(layer.glyph));
            canvas.paint(colorAt(layer.color, foreground));
            canvas.restore();
        }
        return !layers.empty();
    }

    // The smallest strike with at least `pixelsPerEm`, or else the largest, since scaling down keeps a picture sharp.
    BitmapGlyph bitmapGlyph(NSGlyph glyph, double pixelsPerEm) {
        FT_Int best = -1;
        for (FT_Int i = 0; i < face_->num_fixed_sizes; ++i) {
            const FT_Pos size = face_->available_sizes[i].y_ppem;
            const FT_Pos bestSize = best < 0 ? 0 : face_->available_sizes[best].y_ppem;
            const bool isEnough = static_cast<double>(size) / 64 >= pixelsPerEm;
            const bool bestIsEnough = best >= 0 && static_cast<double>(bestSize) / 64 >= pixelsPerEm;
            if (best < 0 || (isEnough ? !bestIsEnough || size < bestSize : !bestIsEnough && size > bestSize)) best = i;
        }
        if (best < 0 || FT_Select_Size(face_, best) != 0 || !succeeded(FT_Load_Glyph(face_, glyph, FT_LOAD_COLOR)))
            return {};
        const FT_GlyphSlot slot = face_->glyph;
        const double ppem = static_cast<double>(face_->available_sizes[best].y_ppem) / 64;
        if (slot->format != FT_GLYPH_FORMAT_BITMAP || ppem <= 0) return {};
        const double units = unitsPerEm_ / ppem;
        return {bitmapOf(slot->bitmap),
                {.m11 = units, .m22 = -units, .tX = units * slot->bitmap_left, .tY = units * slot->bitmap_top}};
    }

    std::mutex mutex_;
    const std::span<const uint8_t> file_;
    const int index_;
    // FreeType does not report it for bitmap-only fonts.
    const double unitsPerEm_;
    bool isOpened_ = false;
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    FT_Color* palette_ = nullptr;
    uint32_t paletteSize_ = 0;
    std::vector<uint8_t> colrTable_;
};

ColourGlyphs::ColourGlyphs(std::span<const uint8_t> file, int index, double unitsPerEm)
    : source_(std::make_unique<Source>(file, index, unitsPerEm)) {}

ColourGlyphs::~ColourGlyphs() = default;

bool ColourGlyphs::hasGlyph(NSGlyph glyph) const {
    return source_->hasGlyph(glyph);
}

NSBezierPath ColourGlyphs::silhouette(NSGlyph glyph) const {
    return source_->silhouette(glyph);
}

DeviceBox ColourGlyphs::bounds(NSGlyph glyph, const NSAffineTransform& toDevice) const {
    return source_->bounds(glyph, toDevice);
}

Ref<NSBitmapImageRep> ColourGlyphs::picture(NSGlyph glyph, const NSAffineTransform& toDevice, StraightColor foreground,
                                            const PixelRect& box) const {
    return source_->picture(glyph, toDevice, foreground, box);
}

}  // namespace qz
