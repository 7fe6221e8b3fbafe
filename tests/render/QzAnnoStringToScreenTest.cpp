#include <cstring>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/render/QzTextRender.h"
#include "platform/graphics/NSBezierPath.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/Pixels.h"

namespace qz {
namespace {

using namespace test;
using testing::ElementsAre;

class PipelineTest : public testing::Test {
protected:
    PipelineTest() {
        pipeline->setPalette(palette);
        pipeline->setScreenSize({400, 300}, {400, 300});
        pipeline->setAnnoString(QzAnnoString::initWithString("Title"_ns));
        log.clear();
    }

    LogCapture log;
    Ref<QzAnnoPalette> palette = paletteWithGlobals({
        {QzFontSizeAttribute, number(40)},
        {QzTextColorAttribute, NSColor::whiteColor()},
        {QzBackgroundColorAttribute, rgba(1, 0, 0)},
        {QzBackgroundWidthAttribute, number(6)},
        {QzBoundingMarginsAttribute, margins(50, 50, 40, 40)},
        {QzHorizontalAlignmentAttribute, integer(2)},
        {QzVerticalAlignmentAttribute, integer(2)},
    });
    Ref<QzAnnoStringToScreen> pipeline = QzAnnoStringToScreen::init();
};

TEST_F(PipelineTest, ANewDataSizeCountsOnlyWithANewScreenSize) {
    const PixelBox before = inkOf(*pipeline->bitmapInFullScreen(true));
    log.clear();
    pipeline->setScreenSize({400, 300}, {200, 150});
    EXPECT_THAT(log.lines(), ElementsAre("Screensize changed on toscreen\n"));
    EXPECT_TRUE(pipeline->available());
    EXPECT_EQ(inkOf(*pipeline->bitmapInFullScreen(true)), before);

    pipeline->setScreenSize({400, 301}, {200, 150});
    EXPECT_FALSE(pipeline->available());
    EXPECT_EQ(log.lines().back(), "For reall!\n");
}

TEST_F(PipelineTest, TheTitleIsScaledFromScreenToDataAboutTheTopLeftCorner) {
    const PixelBox whole = inkOf(*pipeline->bitmapInFullScreen(true));
    const auto half = QzAnnoStringToScreen::init();
    half->setPalette(palette);
    half->setScreenSize({400, 300}, {200, 300});
    half->setAnnoString(pipeline->annoString());
    const auto bitmap = half->bitmapInFullScreen(true);
    EXPECT_EQ(bitmap->pixelsWide(), 400) << "the image keeps the screen's size";
    const PixelBox narrow = inkOf(*bitmap);
    EXPECT_NEAR(narrow.left, whole.left / 2, 1);
    EXPECT_NEAR(narrow.width(), whole.width() / 2, 1);
    EXPECT_EQ(narrow.height(), whole.height());
}

TEST_F(PipelineTest, TheBoxImageIsTheFullImageCutOut) {
    NSRect place;
    const auto full = pipeline->bitmapInFullScreen(true, &place);
    EXPECT_EQ(place, (NSRect{{0, 0}, {400, 300}}));
    const auto box = pipeline->bitmapInFullScreen(false, &place);
    const NSRect textBox = pipeline->textContainer()->textBox();
    EXPECT_EQ(place, (NSRect{{textBox.origin.x - 10, textBox.origin.y - 10},
                             {textBox.size.width + 20, textBox.size.height + 20}}));
    ASSERT_EQ(box->pixelsWide(), static_cast<int32_t>(place.size.width));
    ASSERT_EQ(box->pixelsHigh(), static_cast<int32_t>(place.size.height));
    EXPECT_FALSE(inkOf(*box) == PixelBox{});
    const auto left = static_cast<int32_t>(place.origin.x);
    const auto top = static_cast<int32_t>(place.origin.y);
    for (int32_t y = 0; y < box->pixelsHigh(); ++y) {
        ASSERT_EQ(std::memcmp(box->row(y), full->row(top + y) + 4 * left, static_cast<size_t>(box->bytesPerRow())), 0)
            << y;
    }
}

TEST_F(PipelineTest, ADirectionOverrulesTheTextsOwn) {
    const Ref<QzAnnoPalette> natural = paletteWithGlobals({{QzFontSizeAttribute, number(40)},
                                                           {QzTextColorAttribute, NSColor::whiteColor()},
                                                           {QzHorizontalAlignmentAttribute, integer(4)}});
    pipeline->setPalette(natural);
    const auto inkOfTitle = [&](const char* text, NSWritingDirection direction) {
        pipeline->setAnnoString(QzAnnoString::initWithString(NSString::stringWithUTF8String(text)));
        pipeline->setBaseWritingDirection(direction);
        return inkOf(*pipeline->bitmapInFullScreen(true));
    };
    EXPECT_LT(inkOfTitle("Title", NSWritingDirection::natural).left, 20);
    EXPECT_GT(inkOfTitle("Title", NSWritingDirection::rightToLeft).right, 380) << "aligned to the right";
    EXPECT_GT(inkOfTitle("שלום", NSWritingDirection::natural).right, 380);
    EXPECT_LT(inkOfTitle("שלום", NSWritingDirection::leftToRight).left, 20);
    // Back on its own direction, the same title again.
    EXPECT_GT(inkOfTitle("שלום", NSWritingDirection::natural).right, 380);
}

TEST_F(PipelineTest, EitherStringDropsTheOther) {
    const auto attributed = NSAttributedString::initWithString("ready"_ns, NSDictionary::dictionary());
    pipeline->setAttributedString(attributed);
    EXPECT_FALSE(pipeline->annoString());
    EXPECT_EQ(pipeline->attributedString()->characters(), u"ready");
    pipeline->setAnnoString(QzAnnoString::initWithString("again"_ns));
    EXPECT_FALSE(pipeline->available());
    EXPECT_EQ(pipeline->attributedString()->characters(), u"again");
    EXPECT_TRUE(pipeline->available());
}

TEST_F(PipelineTest, WithoutTextTheImageIsBlankAndWithoutSizesThereIsNone) {
    pipeline->setAnnoString({});
    EXPECT_EQ(inkOf(*pipeline->bitmapInFullScreen(true)), PixelBox{});
    pipeline->setAnnoString(QzAnnoString::initWithString(NSString::string()));
    EXPECT_EQ(inkOf(*pipeline->bitmapInFullScreen(false)), PixelBox{});

    const auto unset = QzAnnoStringToScreen::init();
    unset->setPalette(palette);
    unset->setAnnoString(QzAnnoString::initWithString("Title"_ns));
    EXPECT_FALSE(unset->bitmapInFullScreen(true));
}

TEST_F(PipelineTest, AScreenBeyondEveryBitmapIsRefused) {
    pipeline->setScreenSize({100000, 100000}, {100000, 100000});
    log.clear();
    EXPECT_FALSE(pipeline->bitmapInFullScreen(true));
    EXPECT_EQ(log.lines().back(), "No image of {100000, 100000} points can be made\n");
    EXPECT_TRUE(pipeline->bitmapInFullScreen(false)) << "the text alone is small enough";
}

TEST_F(PipelineTest, DrawsOverAFrameOfTheHosts) {
    NSBitmapImageRep::Format format;
    format.pixelsWide = 400;
    format.pixelsHigh = 300;
    const auto frame = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format);
    ASSERT_TRUE(pipeline->drawInFullScreen(true, frame));
    const auto bitmap = pipeline->bitmapInFullScreen(true);
    EXPECT_EQ(std::memcmp(frame->bitmapData(), bitmap->bitmapData(), 400 * 300 * 4), 0);

    std::memset(frame->bitmapData(), 255, 400 * 300 * 4);
    ASSERT_TRUE(pipeline->drawInFullScreen(true, frame));
    EXPECT_EQ(pixelAt(*frame, 0, 0), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(boxOf(*frame, [](Pixel p) { return p.alpha != 255; }), PixelBox{});
    EXPECT_EQ(boxOf(*frame, [](Pixel p) { return p.green != 255; }),
              boxOf(*bitmap, [](Pixel p) { return p.red != p.green; }));

    format.bitsPerSample = 16;
    EXPECT_FALSE(pipeline->drawInFullScreen(true, NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format)));
}

TEST(TextRender, DropsFractionsOfAPoint) {
    const LogCapture log;
    const auto image = NSImage::initWithSize({100.7f, 20.2f});
    image->lockFocus();
    NSColor::whiteColor()->set();
    NSBezierPath::bezierPathWithRect({{0, 0}, {101, 21}}).fill();
    image->unlockFocus();
    const auto bitmap = QzTextRender::rasterizeImage(*image);
    EXPECT_EQ(bitmap->pixelsWide(), 100);
    EXPECT_EQ(bitmap->pixelsHigh(), 20);
    EXPECT_EQ(bitmap->bytesPerRow(), 402);
    EXPECT_EQ(bitmap->bitsPerPixel(), 32);
    EXPECT_EQ(inkOf(*bitmap), (PixelBox{0, 0, 100, 20}));
    EXPECT_THAT(log.lines(), ElementsAre("Bitmap rep's colorspace name is NSCalibratedRGBColorSpace\n"));

    const auto again = QzTextRender::rasterizeImageRep(*bitmap);
    EXPECT_EQ(inkOf(*again), (PixelBox{0, 0, 100, 20}));
}

TEST_F(PipelineTest, AHostsOwnFrameIsDrawnIntoRowByRow) {
    const auto bitmap = pipeline->bitmapInFullScreen(true);
    const PixelBox ink = inkOf(*bitmap);
    // Rows longer than their pixels; the bytes in between belong to the host.
    constexpr int32_t kRowBytes = 4 * 400 + 52;
    std::vector<uint8_t> frame(kRowBytes * 300, 0);
    for (int32_t y = 0; y < 300; ++y) std::fill_n(frame.begin() + y * kRowBytes + 1600, 52, uint8_t{0xA5});
    const std::vector<uint8_t> clear = frame;
    NSRect place;
    PixelRect changed;
    ASSERT_TRUE(pipeline->drawInFullScreen(true, PixelBuffer{frame.data(), 400, 300, kRowBytes}, &place, &changed));
    EXPECT_EQ(place, (NSRect{{0, 0}, {400, 300}}));
    for (int32_t y = 0; y < 300; ++y) {
        ASSERT_EQ(std::memcmp(frame.data() + y * kRowBytes, std::as_const(*bitmap).row(y), 1600), 0) << y;
        ASSERT_EQ(std::memcmp(frame.data() + y * kRowBytes + 1600, clear.data() + y * kRowBytes + 1600, 52), 0) << y;
    }
    EXPECT_LE(changed.x, ink.left);
    EXPECT_LE(changed.y, ink.top);
    EXPECT_GE(changed.right(), ink.right);
    EXPECT_GE(changed.bottom(), ink.bottom);
    EXPECT_LT(changed.height, ink.height() + 8) << "no more than the title's rows";

    for (const PixelBuffer& bad : {PixelBuffer{nullptr, 400, 300, 1600},
                                   {frame.data(), 0, 300, 1600},
                                   {frame.data(), 400, 300, 1599},
                                   {frame.data(), 400, -1, 1600}}) {
        EXPECT_FALSE(pipeline->drawInFullScreen(true, bad));
    }
}

// The pages of a freed bitmap are reused for the next of its size, which must be as blank as a new one.
TEST_F(PipelineTest, EveryBitmapStartsBlank) {
    pipeline->setScreenSize({640, 480}, {640, 480});
    const PixelBox ink = inkOf(*pipeline->bitmapInFullScreen(true));
    for (const bool hostWrites : {false, true}) {
        auto bitmap = pipeline->bitmapInFullScreen(true);
        if (hostWrites) std::memset(bitmap->bitmapData(), 0x7F, size_t(bitmap->bytesPerRow()) * 480);
        bitmap.reset();
        const auto next = pipeline->bitmapInFullScreen(true);
        EXPECT_EQ(inkOf(*next), ink);
        EXPECT_EQ(pixelAt(*next, 5, 5), kClear);
    }
}

}  // namespace
}  // namespace qz
