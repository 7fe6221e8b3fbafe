// Puts a title over a frame and writes it as PPM.
//
//     title_over_frame broadcast.plist "Lower Third" "Good evening" frame.ppm
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <QzAnno/QzAnno.h>

namespace {

constexpr int32_t kWidth = 1280;
constexpr int32_t kHeight = 720;

/// The host's own frame of opaque R, G, B, A: here a dusk sky, in an editor a decoded frame.
std::vector<uint8_t> makeFrame() {
    std::vector<uint8_t> pixels;
    for (int32_t y = 0; y < kHeight; ++y) {
        const auto light = static_cast<uint8_t>(255 * y / kHeight);
        for (int32_t x = 0; x < kWidth; ++x)
            pixels.insert(pixels.end(),
                          {static_cast<uint8_t>(40 + light / 2), static_cast<uint8_t>(60 + light / 4), 110, 255});
    }
    return pixels;
}

bool writePpm(const char* path, const std::vector<uint8_t>& pixels) {
    std::FILE* const file = std::fopen(path, "wb");
    if (!file) return false;
    std::fprintf(file, "P6\n%d %d\n255\n", kWidth, kHeight);
    for (size_t i = 0; i < pixels.size(); i += 4) std::fwrite(&pixels[i], 1, 3, file);
    return std::fclose(file) == 0;
}

int fail(const std::string& message) {
    std::fprintf(stderr, "title_over_frame: %s\n", message.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return fail("usage: title_over_frame PALETTE ANNOTATION TEXT FRAME.ppm");
    const std::string path = argv[1];

    std::string error;
    const auto file = qz::readFile(path, &error);
    const auto palette = file ? qz::paletteFromData(file, &error) : nullptr;
    if (!palette) return fail(path + ": " + error);

    const auto key = palette->findAnnoKey(qz::NSString::stringWithUTF8String(argv[2]));
    if (!key) return fail(path + ": there is no annotation \"" + argv[2] + "\"");
    const auto title = qz::QzMutableAnnoString::initWithString(qz::NSString::stringWithUTF8String(argv[3]));
    title->addFrameAnno(key);

    // The palette's sizes are for a screen of 1920 x 1080 points; the frame may have any size.
    const auto pipeline = qz::QzAnnoStringToScreen::init();
    pipeline->setPalette(palette);
    pipeline->setScreenSize({1920, 1080}, {kWidth, kHeight});
    pipeline->setAnnoString(title);

    std::vector<uint8_t> frame = makeFrame();
    if (!pipeline->drawInFullScreen(true, qz::PixelBuffer{frame.data(), kWidth, kHeight, 0}))
        return fail("the title cannot be drawn");
    for (const auto& lack : pipeline->reportInFullScreen(true).missingGlyphs)
        std::fprintf(stderr, "title_over_frame: no font has \"%s\"\n", lack.character.c_str());
    return writePpm(argv[4], frame) ? 0 : fail(std::string(argv[4]) + ": cannot be written");
}
