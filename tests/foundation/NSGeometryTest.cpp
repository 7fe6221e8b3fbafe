#include <bit>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {
namespace {

TEST(NSGeometry, WritesTheShortestForm) {
    EXPECT_EQ(NSStringFromPoint({1, -2.5f})->utf8(), "{1, -2.5}");
    EXPECT_EQ(NSStringFromSize({0.1f, 1.0f / 3})->utf8(), "{0.1, 0.33333334}");
    EXPECT_EQ(NSStringFromRect({{0, 0}, {1920, 1080}})->utf8(), "{{0, 0}, {1920, 1080}}");
}

TEST(NSGeometry, RandomRectanglesRoundTrip) {
    const uint32_t seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto number = [&] {
        const float value = std::bit_cast<float>(static_cast<uint32_t>(random()));
        return std::isfinite(value) ? value : 0;
    };
    for (int i = 0; i < 20000; ++i) {
        const NSRect rect{{number(), number()}, {number(), number()}};
        const Ref<NSString> text = NSStringFromRect(rect);
        ASSERT_EQ(NSRectFromString(*text), rect) << text->utf8();
        ASSERT_EQ(wellFormedRectFromString(*text), rect) << text->utf8();
        ASSERT_EQ(wellFormedPointFromString(*NSStringFromPoint(rect.origin)), rect.origin);
    }
}

TEST(NSGeometry, ReadsRectangles) {
    const NSRect whole{{1, 2}, {3, 4}};
    const struct {
        const char* text;
        NSRect lenient;
        bool wellFormed;
        const char* reason;
    } cases[] = {
        {"{{1, 2}, {3, 4}}", whole, true, "as written"},
        {" \t{\n{ 1,2 } ,{3 , 4}\r}\n", whole, true, "white space between any tokens"},
        {"{{1,2},{3,4}}", whole, true, "no white space"},
        {"{{1e0, +2}, {0.3E1, 4.}}", whole, true, "exponents, plus signs, bare points"},
        {"{{1.0000000000000000000001, 2}, {3, 4}}", whole, true, "more digits than a float holds"},
        {"{{0.10000000149011612, 0}, {-.5, 0}}", {{0.1f, 0}, {-0.5f, 0}}, true, "17 digits"},
        {"{{, 2}, {3}}", {{0, 2}, {3, 0}}, false, "missing numbers"},
        {"{{1}, {3, 4}}", {{1, 0}, {3, 4}}, false, "a missing number does not shift the next pair"},
        {"{1, 2}, {3, 4}", whole, false, "no outer braces"},
        {"1 2 3 4", whole, false, "numbers only"},
        {"{{1, 2}, {3, 4}", whole, false, "cut off"},
        {"{{1, 2}, {3, 4}} 5", whole, false, "something behind"},
        {"{{1, 2}, {3, 1e39}}", {{1, 2}, {3, 0}}, false, "beyond 32-bit floats"},
        {"{{nan, inf}, {3, 4}}", {}, false, "words are no numbers"},
        {"{{+-1, 2}, {3, 4}}", {}, false, "two signs"},
        {"none", {}, false, "no number at all"},
        {"", {}, false, "empty"},
    };
    for (const auto& [text, lenient, wellFormed, reason] : cases) {
        const Ref<NSString> string = NSString::stringWithUTF8String(text);
        EXPECT_EQ(NSRectFromString(*string), lenient) << reason;
        EXPECT_EQ(wellFormedRectFromString(*string).has_value(), wellFormed) << reason;
    }
    EXPECT_FALSE(wellFormedPointFromString(*"{1, 2, 3}"_ns));
    EXPECT_EQ(NSSizeFromString(*"{7, 8}"_ns), (NSSize{7, 8}));
}

TEST(NSGeometry, IntersectionAndUnion) {
    const NSRect a{{0.1f, 0.7f}, {0.3f, 1e-4f}};
    const NSRect around{{-1000, -1000}, {3000, 3000}};
    EXPECT_EQ(NSIntersectionRect(a, around), a) << "to the last bit";
    EXPECT_EQ(NSUnionRect(around, a), around);
    EXPECT_EQ(NSIntersectionRect({{0, 0}, {2, 2}}, {{1, -1}, {5, 2}}), (NSRect{{1, 0}, {1, 1}}));
    EXPECT_EQ(NSIntersectionRect({{0, 0}, {2, 2}}, {{2, 0}, {2, 2}}), NSRect{}) << "touching is no overlap";
    EXPECT_EQ(NSIntersectionRect({{0, 0}, {2, 2}}, {{1, 1}, {-5, 2}}), NSRect{}) << "a negative size is empty";
    EXPECT_EQ(NSUnionRect({{9, 9}, {0, 5}}, {{1, 1}, {1, 1}}), (NSRect{{1, 1}, {1, 1}}))
        << "an empty one counts as nothing";
    EXPECT_EQ(NSUnionRect({{9, 9}, {0, 5}}, {{1, 1}, {1, 0}}), NSRect{});
}

TEST(NSGeometry, EdgesOfThePointTest) {
    const NSRect rect{{0, 0}, {2, 2}};
    EXPECT_TRUE(NSMouseInRect({0, 0}, rect, true));
    EXPECT_FALSE(NSMouseInRect({0, 2}, rect, true));
    EXPECT_FALSE(NSMouseInRect({0, 0}, rect, false));
    EXPECT_TRUE(NSMouseInRect({0, 2}, rect, false));
    EXPECT_FALSE(NSMouseInRect({2, 1}, rect, true));
}

}  // namespace
}  // namespace qz
