#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno_AnnotatedTextFramework/QzAnno.h"
#include "bindings/c/qzanno.h"

namespace {

constexpr int32_t kWidth = 480;
constexpr int32_t kHeight = 270;

template <auto free>
struct Free {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};
using Palette = std::unique_ptr<qzanno_palette, Free<qzanno_palette_free>>;
using Title = std::unique_ptr<qzanno_title, Free<qzanno_title_free>>;
using Captions = std::unique_ptr<qzanno_captions, Free<qzanno_captions_free>>;
using Renderer = std::unique_ptr<qzanno_renderer, Free<qzanno_renderer_free>>;
using Report = std::unique_ptr<qzanno_report, Free<qzanno_report_free>>;
using Pixels = std::vector<uint8_t>;

/// The object that a call makes.
template <class Owner, class Call>
Owner made(Call&& call) {
    typename Owner::pointer object = nullptr;
    EXPECT_EQ(call(&object), QZANNO_OK) << qzanno_last_error();
    return Owner(object);
}

const char* const kPalettePath = QZANNO_EXAMPLES "/broadcast.plist";

Palette loadPalette() {
    return made<Palette>([](auto** out) { return qzanno_palette_load(kPalettePath, out); });
}

Title newTitle(const char* text) {
    return made<Title>([&](auto** out) { return qzanno_title_new(text, out); });
}

Renderer newRenderer(const Palette& palette) {
    auto renderer = made<Renderer>([&](auto** out) { return qzanno_renderer_new(palette.get(), out); });
    EXPECT_EQ(qzanno_renderer_set_screen(renderer.get(), 1920, 1080, kWidth, kHeight), QZANNO_OK);
    return renderer;
}

Pixels render(const Renderer& renderer, const Title& title, qzanno_area area = QZANNO_AREA_SCREEN,
              qzanno_alpha alpha = QZANNO_ALPHA_PREMULTIPLIED, qzanno_place* where = nullptr) {
    qzanno_place place{};
    EXPECT_EQ(qzanno_renderer_set_title(renderer.get(), title.get()), QZANNO_OK) << qzanno_last_error();
    EXPECT_EQ(qzanno_renderer_measure(renderer.get(), area, &place), QZANNO_OK);
    Pixels pixels(size_t{4} * static_cast<size_t>(place.width) * static_cast<size_t>(place.height), 0xAA);
    const qzanno_buffer buffer = {pixels.data(), place.width, place.height, 0};
    EXPECT_EQ(qzanno_renderer_render(renderer.get(), area, alpha, &buffer, nullptr), QZANNO_OK) << qzanno_last_error();
    if (where) *where = place;
    return pixels;
}

// Characters of one, two, three and four bytes before the annotated stretch: a position counted wrongly moves its
// colour.
constexpr const char* kText = "Zoë: 字幕 😀 engine";
const size_t kEngine = std::strlen("Zoë: 字幕 😀 ");

TEST(CInterface, RendersThePixelsOfThePipeline) {
    const Palette palette = loadPalette();
    const Title title = newTitle(kText);
    ASSERT_EQ(qzanno_title_annotate(title.get(), "Speaker", 0, std::strlen("Zoë:")), QZANNO_OK);
    ASSERT_EQ(qzanno_title_annotate(title.get(), "Emphasis", kEngine, 6), QZANNO_OK);
    const Pixels fromC = render(newRenderer(palette), title);

    const auto file = qz::readFile(kPalettePath, nullptr);
    const auto own = qz::paletteFromData(file);
    const auto string = qz::QzMutableAnnoString::initWithString(qz::NSString::stringWithUTF8String(kText));
    string->addAnno(own->findAnnoKey(qz::NSString::stringWithUTF8String("Speaker")), {0, 4});
    string->addAnno(own->findAnnoKey(qz::NSString::stringWithUTF8String("Emphasis")), {11, 6});
    const auto pipeline = qz::QzAnnoStringToScreen::init();
    pipeline->setPalette(own);
    pipeline->setScreenSize({1920, 1080}, {kWidth, kHeight});
    pipeline->setAnnoString(string);
    Pixels expected(fromC.size());
    ASSERT_TRUE(pipeline->drawInFullScreen(true, qz::PixelBuffer{expected.data(), kWidth, kHeight, 0}));
    EXPECT_TRUE(fromC == expected);
}

TEST(CInterface, BoxAndCompositeShowWhatTheScreenShows) {
    const Palette palette = loadPalette();
    const Renderer renderer = newRenderer(palette);
    // Points are pixels here, so that the box begins on one.
    ASSERT_EQ(qzanno_renderer_set_screen(renderer.get(), kWidth, kHeight, kWidth, kHeight), QZANNO_OK);
    const Title title = newTitle("Box");
    const Pixels screen = render(renderer, title);
    qzanno_place place{};
    const Pixels box = render(renderer, title, QZANNO_AREA_BOX, QZANNO_ALPHA_PREMULTIPLIED, &place);
    ASSERT_LT(place.width, kWidth);

    // Composited over a frame of opaque grey with long rows, and only where `changed` says.
    constexpr int32_t kBytesPerRow = 4 * kWidth + 12;
    Pixels frame(size_t{kBytesPerRow} * kHeight, 100);
    for (size_t i = 3; i < frame.size(); i += 4) frame[i] = 255;
    const Pixels before = frame;
    const qzanno_buffer buffer = {frame.data(), kWidth, kHeight, kBytesPerRow};
    qzanno_pixels changed{};
    ASSERT_EQ(qzanno_renderer_composite(renderer.get(), QZANNO_AREA_SCREEN, &buffer, &changed), QZANNO_OK);

    int32_t inkPixels = 0;
    for (int32_t y = 0; y < kHeight; ++y) {
        for (int32_t x = 0; x < kBytesPerRow / 4; ++x) {
            const auto inFrame = static_cast<size_t>(y * kBytesPerRow + 4 * x);
            const bool isInside =
                x >= changed.x && x < changed.x + changed.width && y >= changed.y && y < changed.y + changed.height;
            if (!isInside) {
                ASSERT_EQ(std::memcmp(&frame[inFrame], &before[inFrame], 4), 0) << x << "," << y;
                continue;
            }
            const uint8_t* const shown = &screen[static_cast<size_t>(4 * (y * kWidth + x))];
            inkPixels += shown[3] > 0;
            // Source over: what the title leaves of the grey, to a rounding of each layer.
            ASSERT_NEAR(frame[inFrame], shown[0] + 100 * (255 - shown[3]) / 255.0, 3) << x << "," << y;
            const auto xInBox = x - static_cast<int32_t>(std::lround(place.x));
            const auto yInBox = y - static_cast<int32_t>(std::lround(place.y));
            if (xInBox < 0 || xInBox >= place.width || yInBox < 0 || yInBox >= place.height) continue;
            ASSERT_NEAR(box[static_cast<size_t>(4 * (yInBox * place.width + xInBox) + 3)], shown[3], 64)
                << x << "," << y;
        }
    }
    EXPECT_GT(inkPixels, 100);
}

TEST(CInterface, StraightPixelsAreThePremultipliedOnesOverTheirAlpha) {
    const Palette palette = loadPalette();
    const Renderer renderer = newRenderer(palette);
    const Title title = newTitle("Straight");
    ASSERT_EQ(qzanno_title_annotate_all(title.get(), "Warning"), QZANNO_OK);
    const Pixels premultiplied = render(renderer, title);
    const Pixels straight = render(renderer, title, QZANNO_AREA_SCREEN, QZANNO_ALPHA_STRAIGHT);
    int partlyClear = 0;
    for (size_t i = 0; i < straight.size(); i += 4) {
        const int alpha = premultiplied[i + 3];
        ASSERT_EQ(straight[i + 3], alpha);
        for (size_t channel = i; channel < i + 3; ++channel) {
            const double expected = alpha == 0 ? 0 : premultiplied[channel] * 255.0 / alpha;
            ASSERT_NEAR(straight[channel], expected, 0.5) << alpha;
        }
        partlyClear += alpha > 0 && alpha < 255;
    }
    EXPECT_GT(partlyClear, 100);
}

TEST(CInterface, ReportsInBytes) {
    const Palette palette = loadPalette();
    const Renderer renderer = newRenderer(palette);
    // U+10FFFD is of a private plane, which no font has; the text before it has bytes and units in different numbers.
    const Title title = newTitle("Zoë 😀 \xF4\x8F\xBF\xBD");
    ASSERT_EQ(qzanno_renderer_set_title(renderer.get(), title.get()), QZANNO_OK);
    const auto report =
        made<Report>([&](auto** out) { return qzanno_renderer_report(renderer.get(), QZANNO_AREA_SCREEN, out); });
    bool tellsSubstitute = false;
    bool tellsLack = false;
    for (size_t i = 0; i < qzanno_report_count(report.get()); ++i) {
        qzanno_report_item item{};
        ASSERT_EQ(qzanno_report_item_at(report.get(), i, &item), QZANNO_OK);
        tellsSubstitute |= item.kind == QZANNO_REPORT_FONT_SUBSTITUTED && item.start == 5 && item.length == 4;
        tellsLack |= item.kind == QZANNO_REPORT_GLYPH_MISSING && item.start == 10 && item.length == 4;
    }
    EXPECT_TRUE(tellsSubstitute);
    EXPECT_TRUE(tellsLack);
}

TEST(CInterface, ThreadsSharePaletteTitleAndCaptions) {
    const Palette palette = loadPalette();
    const auto captions = made<Captions>(
        [&](auto** out) { return qzanno_captions_load(QZANNO_EXAMPLES "/captions.srt", palette.get(), out); });
    const Title title = newTitle("Shared");
    ASSERT_EQ(qzanno_title_annotate_all(title.get(), "Lower Third"), QZANNO_OK);
    const Pixels alone = render(newRenderer(palette), title);
    std::atomic<int> same = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const Renderer renderer = newRenderer(palette);
            qzanno_cue cue{};
            for (size_t k = 0; qzanno_captions_cue(captions.get(), k, &cue) == QZANNO_OK; ++k)
                EXPECT_EQ(qzanno_renderer_set_title(renderer.get(), cue.title), QZANNO_OK) << qzanno_last_error();
            same += render(renderer, title) == alone;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(same, 4);
}

TEST(CInterface, MessagesAreOfTheirThread) {
    qzanno_palette* palette = nullptr;
    ASSERT_EQ(qzanno_palette_load("mine.plist", &palette), QZANNO_ERROR_FILE);
    std::thread([] {
        EXPECT_STREQ(qzanno_last_error(), "");
        qzanno_palette* other = nullptr;
        EXPECT_EQ(qzanno_palette_load("other.plist", &other), QZANNO_ERROR_FILE);
    }).join();
    EXPECT_THAT(qzanno_last_error(), testing::HasSubstr("mine.plist"));
    // Cut at a character, not within one.
    std::string longPath;
    for (int i = 0; i < 2000; ++i) longPath += "ß";
    ASSERT_EQ(qzanno_palette_load(longPath.c_str(), &palette), QZANNO_ERROR_FILE);
    const std::string message = qzanno_last_error();
    EXPECT_LT(message.size(), longPath.size());
    EXPECT_EQ(qz::utf8FromUtf16(qz::utf16FromUtf8(message)), message);
}

}  // namespace
