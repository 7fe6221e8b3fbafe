#include <cmath>

#include <gtest/gtest.h>

#include "platform/graphics/NSColor.h"
#include "tests/graphics/Canvas.h"

namespace qz {
namespace {

std::vector<float> componentsOf(const NSColor& color) {
    return {color.redComponent(), color.greenComponent(), color.blueComponent(), color.alphaComponent()};
}

TEST(NSColor, ComponentsAreClampedOnTheWayIn) {
    const auto color = NSColor::colorWithCalibratedRed(-3, 2, NAN, 0.25f);
    EXPECT_EQ(componentsOf(*color), (std::vector<float>{0, 1, 0, 0.25f}));
    const auto negativeZero = NSColor::colorWithCalibratedWhite(-0.0f, INFINITY);
    EXPECT_TRUE(negativeZero->isEqual(*NSColor::blackColor()));
    EXPECT_EQ(negativeZero->hash(), NSColor::blackColor()->hash()) << "equal colours hash alike";
}

TEST(NSColor, EqualityIsOfSpaceAndComponentsOrOfNames) {
    const auto name = [](const char* color) {
        return NSColor::colorWithCatalogName("System"_ns, NSString::stringWithUTF8String(color));
    };
    const auto red = NSColor::colorWithCalibratedRed(1, 0, 0, 1);
    EXPECT_TRUE(areEqual(red, NSColor::colorWithCalibratedRed(1, 0, 0, 1)));
    EXPECT_FALSE(areEqual(red, NSColor::colorWithCalibratedRed(1, 0, 0, 0.5f)));
    EXPECT_FALSE(areEqual(NSColor::blackColor(), NSColor::colorWithCalibratedRed(0, 0, 0, 1))) << "another space";
    EXPECT_TRUE(areEqual(name("textColor"), name("textColor")));
    EXPECT_EQ(name("textColor")->hash(), name("textColor")->hash());
    EXPECT_FALSE(areEqual(name("textColor"), name("labelColor"))) << "same components, other name";
    EXPECT_FALSE(areEqual(red, "red"_ns));
}

TEST(NSColor, Converts) {
    const auto grey = NSColor::colorWithCalibratedWhite(0.4f, 0.7f);
    const auto rgb = grey->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace);
    EXPECT_EQ(componentsOf(*rgb), (std::vector<float>{0.4f, 0.4f, 0.4f, 0.7f}));
    for (int level = 0; level < 256; ++level) {
        const auto white = NSColor::colorWithCalibratedWhite(float(level) / 255, 1);
        const auto back = white->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace)
                              ->colorUsingColorSpaceName(*NSCalibratedWhiteColorSpace);
        EXPECT_TRUE(areEqual(back, white)) << "grey " << level << " comes back to the bit";
    }
    EXPECT_EQ(rgb->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace), rgb) << "itself, not a copy";
    const auto green =
        NSColor::colorWithCalibratedRed(0, 1, 0, 1)->colorUsingColorSpaceName(*NSCalibratedWhiteColorSpace);
    EXPECT_FLOAT_EQ(green->redComponent(), 0.59f);
    EXPECT_EQ(grey->colorUsingColorSpaceName(*NSNamedColorSpace), nullptr);
    EXPECT_EQ(grey->colorUsingColorSpaceName(*"NSDeviceCMYKColorSpace"_ns), nullptr);
}

TEST(NSColor, NamedColoursKeepTheirNamesKnownOrNot) {
    const auto known = NSColor::colorWithCatalogName("System"_ns, "textBackgroundColor"_ns);
    EXPECT_EQ(known->colorSpaceName(), NSNamedColorSpace);
    EXPECT_EQ(componentsOf(*known), (std::vector<float>{1, 1, 1, 1}));
    EXPECT_TRUE(areEqual(known->colorUsingColorSpaceName(*NSCalibratedWhiteColorSpace), NSColor::whiteColor()));
    for (const auto& unknown :
         {NSColor::colorWithCatalogName("Crayons"_ns, "textColor"_ns),
          NSColor::colorWithCatalogName("System"_ns, "Ärger"_ns), NSColor::colorWithCatalogName({}, {})}) {
        EXPECT_EQ(componentsOf(*unknown), (std::vector<float>{0, 0, 0, 0}));
        EXPECT_EQ(unknown->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace), nullptr);
        ASSERT_NE(unknown->colorNameComponent(), nullptr);
    }
    EXPECT_EQ(NSColor::colorWithCatalogName("Crayons"_ns, "Ärger"_ns)->description(),
              "NSNamedColorSpace Crayons Ärger");
    EXPECT_EQ(NSColor::whiteColor()->catalogNameComponent(), nullptr);
}

TEST(NSColor, SetActsOnTheCurrentContextOnly) {
    Canvas canvas(2, 1);
    NSColor::whiteColor()->set();
    NSGraphicsContext::setCurrentContext(canvas.context);
    NSColor::colorWithCalibratedRed(1, 0.2f, 0, 0.5f)->set();
    NSBezierPath::bezierPathWithRect({{0, 0}, {1, 1}}).fill();
    NSGraphicsContext::setCurrentContext({});
    // Alpha 0.5 is 128 of 255; 51 of it at 0.2.
    EXPECT_EQ(canvas.bytes(), (std::vector<uint8_t>{128, 26, 0, 128, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace qz
