#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "QzAnno/platform/graphics/NSImage.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

using Format = NSBitmapImageRep::Format;

TEST(NSBitmapImageRep, FillsInTheFormatAndStartsClearOrAsTheCallersBufferIs) {
    const auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = 100, .pixelsHigh = 3, .colorSpaceName = NSCalibratedRGBColorSpace, .bytesPerRow = 402});
    EXPECT_EQ(bitmap->bytesPerRow(), 402);
    EXPECT_EQ(bitmap->bitsPerPixel(), 32);
    EXPECT_EQ(std::count(bitmap->bitmapData(), bitmap->bitmapData() + 3 * 402, 0), 3 * 402);
    const auto odd = NSBitmapImageRep::initWithBitmapDataPlanes(
        nullptr, {.pixelsWide = 9, .pixelsHigh = 1, .bitsPerSample = 1, .samplesPerPixel = 1, .hasAlpha = false});
    EXPECT_EQ(odd->bytesPerRow(), 2) << "nine bits";
    std::vector<uint8_t> pixels(8, 7);
    EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(pixels.data(), {.pixelsWide = 2, .pixelsHigh = 1})->row(0),
              pixels.data());
    EXPECT_EQ(pixels, std::vector<uint8_t>(8, 7));
}

TEST(NSBitmapImageRep, RefusesWhatNoBitmapIs) {
    const struct {
        Format format;
        const char* reason;
    } cases[] = {
        {{.pixelsWide = 0, .pixelsHigh = 5}, "no width"},
        {{.pixelsWide = 5, .pixelsHigh = -1}, "negative height"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .isPlanar = true}, "planar"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bytesPerRow = 19}, "rows shorter than their pixels"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bytesPerRow = -20}, "negative row"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bitsPerPixel = 24}, "pixels shorter than their samples"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .bitsPerSample = 7}, "seven bits"},
        {{.pixelsWide = 5, .pixelsHigh = 5, .samplesPerPixel = 0}, "no samples"},
        {{.pixelsWide = INT32_MAX, .pixelsHigh = 1}, "row beyond 32 bits"},
    };
    uint8_t unused = 0;
    for (const auto& c : cases) {
        EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, c.format), nullptr) << c.reason;
        EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(&unused, c.format), nullptr) << c.reason;
    }
    for (const Format& tooLarge : {Format{.pixelsWide = 16384, .pixelsHigh = 16385},
                                   Format{.pixelsWide = 1, .pixelsHigh = INT32_MAX, .bytesPerRow = INT32_MAX}}) {
        EXPECT_EQ(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, tooLarge), nullptr);
    }
    EXPECT_NE(NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 16384, .pixelsHigh = 16384}), nullptr);
}

TEST(NSGraphicsContext, TakesOnlyRGBAOfEightBits) {
    const auto contextOf = [](const Format& format) {
        return NSGraphicsContext::graphicsContextWithBitmapImageRep(
            NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format), true);
    };
    EXPECT_NE(contextOf({.pixelsWide = 1, .pixelsHigh = 1}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 1, .pixelsHigh = 1, .samplesPerPixel = 3, .hasAlpha = false}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 1, .pixelsHigh = 1, .bitsPerSample = 16}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 1, .pixelsHigh = 1, .bitsPerPixel = 64}), nullptr);
    EXPECT_EQ(contextOf({.pixelsWide = 0, .pixelsHigh = 1}), nullptr);
}

TEST(NSImage, GivesFractionsAPixelAndRefusesImpossibleSizes) {
    const auto image = NSImage::initWithSize({100.7f, 20});
    EXPECT_EQ(image->size(), (NSSize{100.7f, 20}));
    EXPECT_EQ(image->bitmap()->pixelsWide(), 101);
    for (const NSSize size : {NSSize{0, 5}, {5, -1}, {NAN, 5}, {INFINITY, 5}, {5, 3e9f}, {1e6f, 1e6f}, {1e30f, 1}}) {
        EXPECT_EQ(NSImage::initWithSize(size), nullptr) << size.width << " x " << size.height;
    }
}

void fillTopLeftOfUserSpace() {
    NSBezierPath::bezierPathWithRect({{0, 0}, {1, 1}}).fill();
}

TEST(NSImage, FocusNestsBetweenImagesAndComesBack) {
    const auto outer = NSImage::initWithSize({4, 4}), inner = NSImage::initWithSize({4, 4});
    outer->setFlipped(true);
    outer->lockFocus();
    const auto outerContext = NSGraphicsContext::currentContext();
    inner->lockFocus();
    outer->unlockFocus();
    EXPECT_NE(NSGraphicsContext::currentContext(), outerContext) << "not the innermost lock: nothing happens";
    fillTopLeftOfUserSpace();
    inner->unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext(), outerContext);
    fillTopLeftOfUserSpace();
    outer->unlockFocus();
    outer->unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    EXPECT_EQ(outer->bitmap()->row(0)[3], 255) << "flipped: the origin is at the top";
    EXPECT_EQ(inner->bitmap()->row(3)[3], 255) << "not flipped: at the bottom";
}

TEST(NSImage, DrawsWholeIntoASmallerBitmap) {
    const auto image = NSImage::initWithSize({100.7f, 3});
    image->setFlipped(true);
    image->lockFocus();
    NSBezierPath::bezierPathWithRect({{0, 0}, {101, 3}}).fill();
    image->unlockFocus();
    const auto target =
        NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 100, .pixelsHigh = 3, .bytesPerRow = 402});
    const auto context = NSGraphicsContext::graphicsContextWithBitmapImageRep(target, true);
    const uint8_t* const pixels = target->bitmapData();
    target->row(0)[3] = 255;
    context->drawBitmap(*target, 1, 1);
    EXPECT_EQ(std::count(pixels, pixels + 3 * 402, 255), 1) << "not from the target into itself";
    context->drawBitmap(*image->bitmap(), 0, 0);
    EXPECT_EQ(std::count(pixels, pixels + 3 * 402, 255), 300);
    EXPECT_EQ(pixels[400] + pixels[401], 0);
}

}  // namespace
}  // namespace qz
