// Font files that go away, or that are not what they say.
#include <random>

#include <gtest/gtest.h>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "tests/support/FontFiles.h"
#include "tests/support/Palettes.h"
#include "tests/support/Pixels.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

class FontFault : public testing::Test {
protected:
    FontFault() {
        setStandardErrorHook([](std::string_view) {});
    }
    ~FontFault() override { setStandardErrorHook({}); }
};

test::PixelBox inkWith(const std::shared_ptr<FontLibrary>& library, const char* font) {
    const Ref<QzAnnoPalette> palette =
        test::paletteWithGlobals({{QzFontAttribute, NSString::stringWithUTF8String(font)},
                                  {QzFontSizeAttribute, test::number(24)},
                                  {QzBoldAttribute, test::integer(1)},
                                  {QzStrikeThroughAttribute, test::integer(1)}});
    palette->setFontLibrary(library);
    const auto screen = QzAnnoStringToScreen::init();
    screen->setPalette(palette);
    screen->setScreenSize({160, 64}, {160, 64});
    screen->setAnnoString(QzAnnoString::initWithString("Title ffi \xC3\xA9"_ns));
    const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(true);
    screen->reportInFullScreen(true);
    return test::inkOf(*drawn);
}

/// Bytes changed anywhere, the tables' directory included, and files cut short. Whatever comes out is drawn, or
/// another font is.
TEST_F(FontFault, DamagedFontsAreDrawnOrReplaced) {
    const std::string whole = test::quokka(test::fontFile("DejaVuSans"));
    ASSERT_FALSE(whole.empty());
    std::minstd_rand random(11);
    for (int damage = 0; damage < 40; ++damage) {
        SCOPED_TRACE(testing::Message() << "damage " << damage);
        std::string file = whole;
        const size_t within = damage % 2 ? 4096 : file.size();
        for (int byte = 0; byte < 1 << damage % 12; ++byte) file[random() % within] = static_cast<char>(random());
        if (damage % 5 == 4) file.resize(random() % file.size());
        const TemporaryFolder folder;
        ASSERT_TRUE(writeText(folder.file("quokka.ttf"), file));
        const auto library = FontLibrary::withDirectories({folder.path().string()});
        ASSERT_TRUE(library);
        inkWith(library, "Quokka Sans");
    }
    EXPECT_GT(inkWith({}, "DejaVu Sans").width(), 20) << "other fonts are as they were";
}

}  // namespace
}  // namespace qz
