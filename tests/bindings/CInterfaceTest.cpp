#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/QzAnno.h"
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
              qzanno_place* where = nullptr) {
    qzanno_place place{};
    EXPECT_EQ(qzanno_renderer_set_title(renderer.get(), title.get()), QZANNO_OK) << qzanno_last_error();
    EXPECT_EQ(qzanno_renderer_measure(renderer.get(), area, &place), QZANNO_OK);
    Pixels pixels(size_t{4} * static_cast<size_t>(place.width) * static_cast<size_t>(place.height), 0xAA);
    const qzanno_buffer buffer = {pixels.data(), place.width, place.height, 0};
    EXPECT_EQ(qzanno_renderer_render(renderer.get(), area, QZANNO_ALPHA_PREMULTIPLIED, &buffer, nullptr), QZANNO_OK)
        << qzanno_last_error();
    if (where) *where = place;
    return pixels;
}

// Characters of one, two, three and four bytes before the annotated stretch: a position counted wrongly moves its
// colour.
constexpr const char* kText = "Zoë: 字幕 😀 engine";
const size_t kEngine = std::strlen("Zoë: 字幕 😀 ");

TEST(CInterface, DrawsThePixelsOfThePipeline) {
    const Palette palette = loadPalette();
    const Renderer renderer = newRenderer(palette);
    const Title title = newTitle(kText);
    ASSERT_EQ(qzanno_title_annotate(title.get(), "Speaker", 0, std::strlen("Zoë:")), QZANNO_OK);
    ASSERT_EQ(qzanno_title_annotate(title.get(), "Emphasis", kEngine, 6), QZANNO_OK);

    const auto own = qz::paletteFromData(qz::readFile(kPalettePath, nullptr));
    const auto string = qz::QzMutableAnnoString::initWithString(qz::NSString::stringWithUTF8String(kText));
    string->addAnno(own->findAnnoKey(qz::NSString::stringWithUTF8String("Speaker")), {0, 4});
    string->addAnno(own->findAnnoKey(qz::NSString::stringWithUTF8String("Emphasis")), {11, 6});
    const auto pipeline = qz::QzAnnoStringToScreen::init();
    pipeline->setPalette(own);
    pipeline->setScreenSize({1920, 1080}, {kWidth, kHeight});
    pipeline->setAnnoString(string);
    for (const qzanno_area area : {QZANNO_AREA_BOX, QZANNO_AREA_SCREEN}) {
        qzanno_place place{};
        const Pixels fromC = render(renderer, title, area, &place);
        Pixels expected(fromC.size());
        ASSERT_TRUE(pipeline->drawInFullScreen(area == QZANNO_AREA_SCREEN,
                                               qz::PixelBuffer{expected.data(), place.width, place.height, 0}));
        EXPECT_TRUE(fromC == expected);
    }

    // Draws over a frame of opaque white with long rows, and only inside `changed`.
    constexpr int32_t kBytesPerRow = 4 * kWidth + 12;
    Pixels frame(size_t{kBytesPerRow} * kHeight, 255);
    Pixels expected = frame;
    const qzanno_buffer buffer = {frame.data(), kWidth, kHeight, kBytesPerRow};
    qzanno_pixels changed{};
    ASSERT_EQ(qzanno_renderer_composite(renderer.get(), QZANNO_AREA_SCREEN, &buffer, &changed), QZANNO_OK);
    ASSERT_TRUE(pipeline->drawInFullScreen(true, qz::PixelBuffer{expected.data(), kWidth, kHeight, kBytesPerRow}));
    EXPECT_TRUE(frame == expected);
    for (int32_t y = changed.y; y < changed.y + changed.height; ++y)
        std::memset(&frame[static_cast<size_t>(kBytesPerRow * y + 4 * changed.x)], 255, size_t{4} * changed.width);
    EXPECT_FALSE(frame == expected);
    EXPECT_TRUE(frame == Pixels(frame.size(), 255)) << "changed pixels are told";
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
    // Cut between characters.
    std::string longPath;
    for (int i = 0; i < 2000; ++i) longPath += "ß";
    ASSERT_EQ(qzanno_palette_load(longPath.c_str(), &palette), QZANNO_ERROR_FILE);
    const std::string message = qzanno_last_error();
    EXPECT_LT(message.size(), longPath.size());
    EXPECT_EQ(qz::utf8FromUtf16(qz::utf16FromUtf8(message)), message);
}

}  // namespace
