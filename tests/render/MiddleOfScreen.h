#pragma once

#include <gtest/gtest.h>

#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/Pixels.h"

namespace qz::test {

/// Draws a text, white, in the middle of a screen of 400 x 300.
class MiddleOfScreen : public testing::Test {
protected:
    explicit MiddleOfScreen(double fontSize) : fontSize_(fontSize) { pipeline->setScreenSize({400, 300}, {400, 300}); }

    Ref<NSBitmapImageRep> drawText(const char* text, const Attributes& attributes) {
        palette = paletteWithGlobals({
            {QzFontAttribute, "DejaVuSans"_ns},
            {QzFontSizeAttribute, number(fontSize_)},
            {QzTextColorAttribute, NSColor::whiteColor()},
            {QzHorizontalAlignmentAttribute, integer(2)},
            {QzVerticalAlignmentAttribute, integer(1)},
        });
        giveAttributes(*palette, palette->lookupAnno({}), attributes);
        pipeline->setPalette(palette);
        pipeline->setAnnoString(QzAnnoString::initWithString(NSString::stringWithUTF8String(text)));
        return pipeline->bitmapInFullScreen(true);
    }

    LogCapture log;
    Ref<QzAnnoPalette> palette;
    Ref<QzAnnoStringToScreen> pipeline = QzAnnoStringToScreen::init();

private:
    const double fontSize_;
};

}  // namespace qz::test
