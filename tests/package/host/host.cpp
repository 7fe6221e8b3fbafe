// A program of another project, built against the installed library: makes a palette and a title, and asks for its
// pixels, and reads archives of classes that it does not use itself.
#include <cstdio>

#include <QzAnno.h>

using namespace qz::literals;

namespace {

bool readsClassesItDoesNotUse() {
    for (const char* name :
         {"NSURL", "NSFont", "NSColor", "QzBBoxInfo", "QzAnnoPalette", "QzAnnoString", "QzAnnoKey"}) {
        if (qz::codedClassNamed(name)) continue;
        std::printf("%s is not known to the unarchivers\n", name);
        return false;
    }
    return true;
}

}  // namespace

int main() {
    if (!readsClassesItDoesNotUse()) return 1;
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
