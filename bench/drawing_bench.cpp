// Compares each of our loops with the library call that could replace it, on the same pixels.

#include <vector>

#include <benchmark/benchmark.h>
#include <ft2build.h>
#include <pixman.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "platform/graphics/Compositing.h"
#include "platform/graphics/DeviceShape.h"
#include "platform/text/FontFace.h"

namespace qz {
namespace {

using Point = NSBezierPath::Point;

constexpr float kPointSize = 72;
constexpr std::u32string_view kLetters = U"Rag&8Sow";

/// The outlines of the letters in pixels, y downward, each with its own mask box.
struct Letters {
    std::vector<NSBezierPath> paths;
    std::vector<PixelRect> boxes;

    Letters() {
        const Ref<NSFont> font = NSFont::fontWithName(*"DejaVuSans-Bold"_ns, kPointSize);
        const double scale = kPointSize / font->face().unitsPerEm();
        for (const char32_t letter : kLetters) {
            NSBezierPath path = *font->face().outlineOfGlyph(font->glyphForCharacter(letter));
            path.transformUsingAffineTransform({.m11 = scale, .m22 = -scale, .tX = 20.3, .tY = 80.6});
            path.setLineWidth(6);
            path.setLineJoinStyle(NSLineJoinStyle::round);
            const DeviceShape stroke = DeviceShape::strokeOfGlyph(path, {});
            boxes.push_back(stroke.pixelBounds({0, 0, 1000, 1000}));
            paths.push_back(std::move(path));
        }
    }
};

template <class ShapeOf>
void coverLetters(benchmark::State& state, ShapeOf shapeOf) {
    const Letters letters;
    CoverageMask mask;
    for (auto _ : state) {
        for (size_t i = 0; i < letters.paths.size(); ++i) {
            renderCoverage(shapeOf(letters.paths[i], NSAffineTransform{}), letters.boxes[i], true, mask);
            benchmark::DoNotOptimize(mask.bytes.data());
        }
    }
}

void fillByAreas(benchmark::State& state) {
    coverLetters(state, DeviceShape::fillOfGlyph);
}
void fillByCairo(benchmark::State& state) {
    coverLetters(state, DeviceShape::fillOf);
}
void strokeByAreas(benchmark::State& state) {
    coverLetters(state, DeviceShape::strokeOfGlyph);
}
void strokeByCairo(benchmark::State& state) {
    coverLetters(state, DeviceShape::strokeOf);
}

/// A path as a FreeType outline, in 64ths of a pixel.
struct FreeTypeOutline {
    const PixelRect box;
    std::vector<FT_Vector> points{};
    std::vector<char> tags{};
    std::vector<short> ends{};

    void moveTo(Point point) {
        close();
        add(point, FT_CURVE_TAG_ON);
    }
    void lineTo(Point point) { add(point, FT_CURVE_TAG_ON); }
    void curveTo(Point control1, Point control2, Point end) {
        add(control1, FT_CURVE_TAG_CUBIC);
        add(control2, FT_CURVE_TAG_CUBIC);
        add(end, FT_CURVE_TAG_ON);
    }
    void close() {
        const auto last = static_cast<short>(points.size() - 1);
        if (!points.empty() && (ends.empty() || ends.back() != last)) ends.push_back(last);
    }

private:
    void add(Point point, char tag) {
        points.push_back({static_cast<FT_Pos>((point.x - box.x) * 64), static_cast<FT_Pos>((point.y - box.y) * 64)});
        tags.push_back(tag);
    }
};

void fillByFreeType(benchmark::State& state) {
    const Letters letters;
    FT_Library library = nullptr;
    FT_Init_FreeType(&library);
    for (auto _ : state) {
        for (size_t i = 0; i < letters.paths.size(); ++i) {
            const PixelRect& box = letters.boxes[i];
            CoverageMask mask = CoverageMask::emptyOf(box);
            FreeTypeOutline own{box};
            letters.paths[i].visit(own);
            own.close();
            FT_Outline outline{.n_contours = static_cast<short>(own.ends.size()),
                               .n_points = static_cast<short>(own.points.size()),
                               .points = own.points.data(),
                               .tags = own.tags.data(),
                               .contours = own.ends.data(),
                               .flags = 0};
            FT_Bitmap bitmap{.rows = static_cast<unsigned>(box.height),
                             .width = static_cast<unsigned>(box.width),
                             .pitch = -mask.stride,
                             .buffer = mask.bytes.data(),
                             .num_grays = 256,
                             .pixel_mode = FT_PIXEL_MODE_GRAY,
                             .palette_mode = 0,
                             .palette = nullptr};
            if (FT_Outline_Get_Bitmap(library, &outline, &bitmap) != 0) state.SkipWithError("not rasterised");
            benchmark::DoNotOptimize(mask.bytes.data());
        }
    }
    FT_Done_FreeType(library);
}

/// The mask of the first letter, at the origin.
CoverageMask lettersMask() {
    const Letters letters;
    CoverageMask mask;
    renderCoverage(DeviceShape::strokeOfGlyph(letters.paths.front(), {}), letters.boxes.front(), true, mask);
    mask.box.x = mask.box.y = 0;
    return mask;
}

Ref<NSBitmapImageRep> bitmapOf(const PixelRect& box) {
    return NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = box.width, .pixelsHigh = box.height});
}

/// A pixman image of our pixels, in its R, G, B, A order.
class PixmanImage {
public:
    explicit PixmanImage(NSBitmapImageRep& bitmap)
        : PixmanImage(PIXMAN_a8b8g8r8, bitmap.bounds(), bitmap.row(0), bitmap.bytesPerRow()) {}
    explicit PixmanImage(CoverageMask& mask) : PixmanImage(PIXMAN_a8, mask.box, mask.bytes.data(), mask.stride) {}
    explicit PixmanImage(const pixman_color_t& color) : image_(pixman_image_create_solid_fill(&color)) {}
    ~PixmanImage() { pixman_image_unref(image_); }
    PixmanImage(const PixmanImage&) = delete;
    PixmanImage& operator=(const PixmanImage&) = delete;

    operator pixman_image_t*() const { return image_; }

private:
    PixmanImage(pixman_format_code_t format, const PixelRect& box, void* pixels, int64_t stride)
        : image_(pixman_image_create_bits(format, box.width, box.height, static_cast<uint32_t*>(pixels),
                                          static_cast<int>(stride))) {}

    pixman_image_t* const image_;
};

void composite(pixman_image_t* source, pixman_image_t* mask, pixman_image_t* target, const PixelRect& box) {
    pixman_image_composite32(PIXMAN_OP_OVER, source, mask, target, 0, 0, 0, 0, 0, 0, box.width, box.height);
}

/// The benchmark's argument is the colour's alpha.
void blendMaskByLoop(benchmark::State& state) {
    const CoverageMask mask = lettersMask();
    const auto target = bitmapOf(mask.box);
    for (auto _ : state) blendMask(mask, {255, 128, 0, static_cast<uint8_t>(state.range(0))}, *target);
}
void blendMaskByPixman(benchmark::State& state) {
    CoverageMask mask = lettersMask();
    const auto target = bitmapOf(mask.box);
    const auto alpha = static_cast<uint16_t>(state.range(0) * 257);
    for (auto _ : state) {
        const PixmanImage color({alpha, static_cast<uint16_t>(alpha / 2), 0, alpha});
        composite(color, PixmanImage(mask), PixmanImage(*target), mask.box);
    }
}

Ref<NSBitmapImageRep> bitmapOfLetter(const CoverageMask& mask) {
    const auto bitmap = bitmapOf(mask.box);
    blendMask(mask, {255, 128, 0, 200}, *bitmap);
    return bitmap;
}

void blendBitmapByLoop(benchmark::State& state) {
    const CoverageMask mask = lettersMask();
    const auto source = bitmapOfLetter(mask), target = bitmapOf(mask.box);
    for (auto _ : state) blendBitmap(*source, 0, 0, *target, 180);
}
void blendBitmapByPixman(benchmark::State& state) {
    const CoverageMask mask = lettersMask();
    const auto source = bitmapOfLetter(mask), target = bitmapOf(mask.box);
    for (auto _ : state) {
        const PixmanImage thinned({0, 0, 0, 180 * 257});
        composite(PixmanImage(*source), thinned, PixmanImage(*target), mask.box);
    }
}

void uniteMasksByLoop(benchmark::State& state) {
    const CoverageMask mask = lettersMask();
    CoverageMask target = CoverageMask::emptyOf(mask.box);
    for (auto _ : state) {
        uniteMasks(mask, 0, 0, target);
        benchmark::DoNotOptimize(target.bytes.data());
    }
}
void uniteMasksByPixman(benchmark::State& state) {
    CoverageMask mask = lettersMask(), target = CoverageMask::emptyOf(mask.box);
    for (auto _ : state) composite(PixmanImage(mask), nullptr, PixmanImage(target), mask.box);
}

BENCHMARK(fillByAreas);
BENCHMARK(fillByFreeType);
BENCHMARK(fillByCairo);
BENCHMARK(strokeByAreas);
BENCHMARK(strokeByCairo);
BENCHMARK(blendMaskByLoop)->Arg(255)->Arg(128);
BENCHMARK(blendMaskByPixman)->Arg(255)->Arg(128);
BENCHMARK(blendBitmapByLoop);
BENCHMARK(blendBitmapByPixman);
BENCHMARK(uniteMasksByLoop);
BENCHMARK(uniteMasksByPixman);

}  // namespace
}  // namespace qz
