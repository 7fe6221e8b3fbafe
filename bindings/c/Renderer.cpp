#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "bindings/c/Calls.h"
#include "bindings/c/Objects.h"
#include "bindings/c/Report.h"
#include "captions/CaptionLooks.h"
#include "captions/PlacementAnnos.h"
#include "platform/graphics/StraightAlpha.h"

namespace qz::c {
namespace {

struct Settings {
    Ref<NSData> palette;
    NSSize screen = {1920, 1080};
    int32_t frameWidth = 1920;
    int32_t frameHeight = 1080;
    std::shared_ptr<FontLibrary> fonts;
    std::string language;
    NSWritingDirection direction = NSWritingDirection::natural;
};

/// A palette and a pipeline that draws with it, for one state of the settings.
class PreparedPipeline {
public:
    explicit PreparedPipeline(const Settings& settings)
        : looks_(newPalette(settings.palette, settings.fonts), settings.screen),
          palette_(looks_.palette()),
          placements_(palette_, settings.screen, settings.direction),
          pipeline_(QzAnnoStringToScreen::init()) {
        pipeline_->setPalette(palette_);
        pipeline_->setLanguage(settings.language);
        pipeline_->setBaseWritingDirection(settings.direction);
        pipeline_->setScreenSize(settings.screen,
                                 {static_cast<float>(settings.frameWidth), static_cast<float>(settings.frameHeight)});
    }

    void setTitle(const qzanno_title& title) {
        const auto string = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(title.text));
        for (const qzanno_title::Span& span : title.spans)
            string->addAnno(keyOf(span), *title.positions.rangeOf(span.bytes));
        placements_.place(title.placement, *string);
        pipeline_->setAnnoString(string);
    }

    /// Returns null if neither the palette nor the title's file defines the name.
    Ref<QzAnnoKey> keyOf(const qzanno_title::Span& span) {
        return span.look ? looks_.keyOf(*span.look)
                         : palette_->findAnnoKey(NSString::stringWithUTF8String(span.annotation));
    }
    QzAnnoStringToScreen& pipeline() { return *pipeline_; }

private:
    CaptionLooks looks_;
    const Ref<QzAnnoPalette> palette_;
    PlacementAnnos placements_;
    const Ref<QzAnnoStringToScreen> pipeline_;
};

std::string text(int32_t width, int32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

bool isKnown(qzanno_area area) {
    return area == QZANNO_AREA_SCREEN || area == QZANNO_AREA_BOX;
}

int32_t pixelsOf(float points, float perPoint) {
    return std::max(1, static_cast<int32_t>(std::lround(points * perPoint)));
}

uint8_t* row(const PixelBuffer& buffer, int64_t y) {
    return buffer.pixels + y * buffer.bytesPerRow;
}

void clear(const PixelBuffer& buffer) {
    for (int32_t y = 0; y < buffer.height; ++y)
        std::memset(row(buffer, y), 0, size_t{4} * static_cast<size_t>(buffer.width));
}

void makeStraight(const PixelBuffer& buffer, const PixelRect& area) {
    for (int64_t y = area.y; y < area.bottom(); ++y) {
        uint8_t* const pixels = row(buffer, y) + ptrdiff_t{4} * area.x;
        unpremultiply(pixels, static_cast<size_t>(area.width), pixels);
    }
}

}  // namespace
}  // namespace qz::c

struct qzanno_renderer {
    qz::c::Settings settings;
    qzanno_title title;
    // Null until needed, and after a setting has changed.
    std::unique_ptr<qz::c::PreparedPipeline> prepared;

    qz::QzAnnoStringToScreen& pipeline() {
        if (!prepared) {
            auto fresh = std::make_unique<qz::c::PreparedPipeline>(settings);
            fresh->setTitle(title);
            prepared = std::move(fresh);
        }
        return prepared->pipeline();
    }

    qzanno_place place(qzanno_area area) {
        const bool isFull = area == QZANNO_AREA_SCREEN;
        const qz::NSRect rect = pipeline().placeInFullScreen(isFull);
        if (isFull) return {0, 0, settings.frameWidth, settings.frameHeight};
        const float across = static_cast<float>(settings.frameWidth) / settings.screen.width;
        const float down = static_cast<float>(settings.frameHeight) / settings.screen.height;
        return {rect.origin.x * across, rect.origin.y * down, qz::c::pixelsOf(rect.size.width, across),
                qz::c::pixelsOf(rect.size.height, down)};
    }

    /// Checks that the picture fits the buffer; fails with the reason otherwise.
    qzanno_result check(qzanno_area area, const qzanno_buffer& buffer, qz::PixelBuffer& checked) {
        using namespace qz::c;
        if (!buffer.pixels) return failNull("buffer->pixels");
        const qzanno_place due = place(area);
        if (buffer.width != due.width || buffer.height != due.height)
            return fail(QZANNO_ERROR_ARGUMENT, "the buffer is of " + text(buffer.width, buffer.height) +
                                                   " pixels, the picture of " + text(due.width, due.height) +
                                                   "; ask qzanno_renderer_measure");
        const int64_t bytesOfRow = int64_t{4} * buffer.width;
        const int64_t bytesPerRow = buffer.bytes_per_row == 0 ? bytesOfRow : buffer.bytes_per_row;
        if (bytesPerRow < bytesOfRow || bytesPerRow > INT32_MAX)
            return fail(QZANNO_ERROR_ARGUMENT, "rows of " + std::to_string(buffer.bytes_per_row) +
                                                   " bytes do not hold " + std::to_string(buffer.width) +
                                                   " pixels of 4");
        checked = {buffer.pixels, buffer.width, buffer.height, static_cast<int32_t>(bytesPerRow)};
        return QZANNO_OK;
    }

    qzanno_result draw(qzanno_area area, const qz::PixelBuffer& buffer, qz::PixelRect& changed) {
        if (pipeline().drawInFullScreen(area == QZANNO_AREA_SCREEN, buffer, nullptr, &changed)) return QZANNO_OK;
        return qz::c::fail(QZANNO_ERROR_SIZE,
                           "no picture of " + qz::c::text(buffer.width, buffer.height) + " pixels can be drawn");
    }
};

using namespace qz::c;

qzanno_result qzanno_renderer_new(const qzanno_palette* palette, qzanno_renderer** out) {
    if (!palette) return failNull("palette");
    if (!out) return failNull("out");
    return guarded([=] {
        auto made = std::make_unique<qzanno_renderer>();
        made->settings.palette = palette->file;
        size_t malformed = 0;
        made->title.positions = *TextPositions::of("", &malformed);
        *out = made.release();
        return QZANNO_OK;
    });
}

void qzanno_renderer_free(qzanno_renderer* renderer) {
    delete renderer;
}

qzanno_result qzanno_renderer_set_screen(qzanno_renderer* renderer, float width_points, float height_points,
                                         int32_t frame_width, int32_t frame_height) {
    if (!renderer) return failNull("renderer");
    return guarded([=] {
        const auto isLength = [](float points) { return points > 0 && points <= qz::Limits::kLengthMax; };
        if (!isLength(width_points) || !isLength(height_points))
            return fail(QZANNO_ERROR_SIZE, "a screen's sides are more than 0 and at most 1000000 points, not " +
                                               std::to_string(width_points) + " x " + std::to_string(height_points));
        if (frame_width < 1 || frame_height < 1 ||
            uint64_t{4} * static_cast<uint64_t>(frame_width) * static_cast<uint64_t>(frame_height) >
                qz::Limits::kBitmapBytesMax)
            return fail(QZANNO_ERROR_SIZE, "a frame of " + text(frame_width, frame_height) +
                                               " pixels cannot be drawn; it has 4 to " +
                                               std::to_string(qz::Limits::kBitmapBytesMax) + " bytes, 4 to a pixel");
        renderer->settings.screen = {width_points, height_points};
        renderer->settings.frameWidth = frame_width;
        renderer->settings.frameHeight = frame_height;
        renderer->prepared.reset();
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_set_fonts(qzanno_renderer* renderer, const qzanno_fonts* fonts) {
    if (!renderer) return failNull("renderer");
    return guarded([=] {
        renderer->settings.fonts = fonts ? fonts->library : nullptr;
        renderer->prepared.reset();
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_set_language(qzanno_renderer* renderer, const char* tag) {
    if (!renderer) return failNull("renderer");
    return guarded([=] {
        std::string language = tag ? tag : "";
        if (!qz::QzAnnoStringToScreen::init()->setLanguage(language))
            return fail(QZANNO_ERROR_ARGUMENT,
                        quoted(language) + " is not a language tag; write one such as ja or zh-Hant");
        renderer->settings.language = std::move(language);
        renderer->prepared.reset();
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_set_direction(qzanno_renderer* renderer, qzanno_direction direction) {
    if (!renderer) return failNull("renderer");
    return guarded([=] {
        switch (direction) {
            case QZANNO_DIRECTION_NATURAL:
                renderer->settings.direction = qz::NSWritingDirection::natural;
                break;
            case QZANNO_DIRECTION_LEFT_TO_RIGHT:
                renderer->settings.direction = qz::NSWritingDirection::leftToRight;
                break;
            case QZANNO_DIRECTION_RIGHT_TO_LEFT:
                renderer->settings.direction = qz::NSWritingDirection::rightToLeft;
                break;
            default:
                return fail(QZANNO_ERROR_ARGUMENT, "there is no direction " + std::to_string(int{direction}));
        }
        renderer->prepared.reset();
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_set_title(qzanno_renderer* renderer, const qzanno_title* title) {
    if (!renderer) return failNull("renderer");
    if (!title) return failNull("title");
    return guarded([=] {
        renderer->pipeline();
        for (const qzanno_title::Span& span : title->spans) {
            if (!span.look && !renderer->prepared->keyOf(span))
                return fail(QZANNO_ERROR_ANNOTATION, "the palette has no annotation " + quoted(span.annotation));
        }
        qzanno_title copy = *title;
        // If memory runs out half-way, a new pipeline shows the former title.
        auto prepared = std::move(renderer->prepared);
        prepared->setTitle(copy);
        renderer->prepared = std::move(prepared);
        renderer->title = std::move(copy);
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_measure(qzanno_renderer* renderer, qzanno_area area, qzanno_place* out) {
    if (!renderer) return failNull("renderer");
    if (!out) return failNull("out");
    return guarded([=] {
        if (!isKnown(area)) return fail(QZANNO_ERROR_ARGUMENT, "there is no area " + std::to_string(int{area}));
        *out = renderer->place(area);
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_render(qzanno_renderer* renderer, qzanno_area area, qzanno_alpha alpha,
                                     const qzanno_buffer* buffer, qzanno_pixels* changed) {
    if (!renderer) return failNull("renderer");
    if (!buffer) return failNull("buffer");
    return guarded([=] {
        if (!isKnown(area)) return fail(QZANNO_ERROR_ARGUMENT, "there is no area " + std::to_string(int{area}));
        if (alpha != QZANNO_ALPHA_PREMULTIPLIED && alpha != QZANNO_ALPHA_STRAIGHT)
            return fail(QZANNO_ERROR_ARGUMENT, "there is no kind of alpha " + std::to_string(int{alpha}));
        qz::PixelBuffer pixels;
        if (const qzanno_result result = renderer->check(area, *buffer, pixels); result != QZANNO_OK) return result;
        clear(pixels);
        qz::PixelRect drawn;
        if (const qzanno_result result = renderer->draw(area, pixels, drawn); result != QZANNO_OK) return result;
        if (alpha == QZANNO_ALPHA_STRAIGHT) makeStraight(pixels, drawn);
        if (changed) *changed = {drawn.x, drawn.y, drawn.width, drawn.height};
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_composite(qzanno_renderer* renderer, qzanno_area area, const qzanno_buffer* buffer,
                                        qzanno_pixels* changed) {
    if (!renderer) return failNull("renderer");
    if (!buffer) return failNull("buffer");
    return guarded([=] {
        if (!isKnown(area)) return fail(QZANNO_ERROR_ARGUMENT, "there is no area " + std::to_string(int{area}));
        qz::PixelBuffer pixels;
        if (const qzanno_result result = renderer->check(area, *buffer, pixels); result != QZANNO_OK) return result;
        qz::PixelRect drawn;
        if (const qzanno_result result = renderer->draw(area, pixels, drawn); result != QZANNO_OK) return result;
        if (changed) *changed = {drawn.x, drawn.y, drawn.width, drawn.height};
        return QZANNO_OK;
    });
}

qzanno_result qzanno_renderer_report(qzanno_renderer* renderer, qzanno_area area, qzanno_report** out) {
    if (!renderer) return failNull("renderer");
    if (!out) return failNull("out");
    return guarded([=] {
        if (!isKnown(area)) return fail(QZANNO_ERROR_ARGUMENT, "there is no area " + std::to_string(int{area}));
        *out = newReport(renderer->pipeline().reportInFullScreen(area == QZANNO_AREA_SCREEN), renderer->title.positions)
                   .release();
        return QZANNO_OK;
    });
}
