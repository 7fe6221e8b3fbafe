// A program of another project, built against the installed library: makes a palette and a title, and asks for its
// pixels.
#include <cstdio>

#include <QzAnno.h>

using namespace qz::literals;

int main() {
    const auto palette = qz::QzAnnoPalette::init();
    const auto title = qz::QzMutableAnnoString::initWithString("Hello"_ns);
    const auto pipeline = qz::QzAnnoStringToScreen::init();
    pipeline->setPalette(palette);
    pipeline->setScreenSize({320, 180}, {320, 180});
    pipeline->setAnnoString(title);
    const auto bitmap = pipeline->bitmapInFullScreen(true);
    if (!bitmap || bitmap->pixelsWide() != 320 || bitmap->pixelsHigh() != 180) return 1;
    const auto file = qz::pngFromBitmap(*bitmap);
    std::printf("%zu bytes of PNG\n", file->length());
    return file->length() > 0 ? 0 : 1;
}
