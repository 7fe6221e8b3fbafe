// The value classes: numbers, strings, maps of objects, rectangles, log formats.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

TEST(NSNumber, SaturatesTowardTheAskedKind) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        int32_t asInt;
        int64_t asLongLong;
        float asFloat;
    } cases[] = {
        {2.9, 2, 2, 2.9f},
        {-2.9, -2, -2, -2.9f},
        {2147483647.5, INT32_MAX, INT32_MAX, 2147483648.0f},
        {4e9, INT32_MAX, 4'000'000'000, 4e9f},
        {-4e9, INT32_MIN, -4'000'000'000, -4e9f},
        {9223372036854775808.0, INT32_MAX, INT64_MAX, 9223372036854775808.0f},
        {1e300, INT32_MAX, INT64_MAX, std::numeric_limits<float>::max()},
        {-1e300, INT32_MIN, INT64_MIN, std::numeric_limits<float>::lowest()},
        {infinity, INT32_MAX, INT64_MAX, std::numeric_limits<float>::infinity()},
    };
    for (const auto& [value, asInt, asLongLong, asFloat] : cases) {
        const Ref<NSNumber> number = NSNumber::numberWithDouble(value);
        EXPECT_EQ(number->intValue(), asInt) << value;
        EXPECT_EQ(number->longLongValue(), asLongLong) << value;
        EXPECT_EQ(number->floatValue(), asFloat) << value;
    }
    EXPECT_EQ(NSNumber::numberWithDouble(std::numeric_limits<double>::quiet_NaN())->intValue(), 0);
    EXPECT_EQ(NSNumber::numberWithLongLong(INT64_MIN)->intValue(), INT32_MIN);
}

TEST(NSNumber, EqualityLooksAtValuesAndAgreesWithHash) {
    const Ref<NSNumber> numbers[] = {NSNumber::numberWithBool(true), NSNumber::numberWithInt(1),
                                     NSNumber::numberWithLongLong(1), NSNumber::numberWithFloat(1),
                                     NSNumber::numberWithDouble(1)};
    for (const auto& a : numbers) {
        for (const auto& b : numbers) {
            EXPECT_TRUE(a->isEqual(*b)) << a->description() << b->description();
            EXPECT_EQ(a->hash(), b->hash());
        }
    }
    constexpr int64_t beyondDouble = (int64_t{1} << 53) + 1;
    EXPECT_FALSE(NSNumber::numberWithLongLong(beyondDouble)->isEqual(*NSNumber::numberWithLongLong(beyondDouble - 1)));
    EXPECT_FALSE(NSNumber::numberWithFloat(0.1f)->isEqual(*NSNumber::numberWithDouble(0.1)));
    EXPECT_FALSE(NSNumber::numberWithInt(1)->isEqual(*"1"_ns));
}

TEST(NSString, MalformedTextIsReplacedSequenceBySequence) {
    const struct {
        const char* utf8;
        std::u16string utf16;
        const char* reason;
    } cases[] = {
        {"a\xC3\xA9\xF0\x9F\x98\x80", u"a\u00E9\U0001F600", "well formed"},
        {"\xE2\x82x", u"\uFFFDx", "cut off inside a character: one maximal sequence"},
        {"\xC0\x80", u"\uFFFD\uFFFD", "an overlong form: no byte of it begins a sequence"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", "a surrogate in UTF-8"},
        {"\xF5\x80", u"\uFFFD\uFFFD", "beyond the last character"},
        {"x\x80y", u"x\uFFFDy", "a lone continuation byte"},
    };
    for (const auto& [utf8, utf16, reason] : cases) {
        EXPECT_EQ(NSString::stringWithUTF8String(utf8)->characters(), utf16) << reason;
    }
    const std::u16string lone = {u'a', 0xD800, u'b', 0xDC00};
    const Ref<NSString> string = NSString::stringWithCharacters(lone);
    EXPECT_EQ(string->characters(), lone) << "kept inside";
    EXPECT_EQ(string->utf8(), "a\uFFFDb\uFFFD");
    EXPECT_EQ(string->substringWithRange({1, 2})->characters(), lone.substr(1, 2));
    EXPECT_FALSE(string->substringWithRange({1, 4}));
    EXPECT_FALSE(string->substringWithRange({1, UINT32_MAX})) << "the end passes 2^32";
}

// A row of pairs, searched from its begin, is what the map must behave like.
TEST(ObjectMap, BehavesLikeARowOfPairs) {
    const uint32_t seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    ObjectMap map;
    map.set({}, "no key"_ns);
    EXPECT_EQ(NSSet::setWithObjects<NSString>({"a"_ns, {}})->count(), 1u) << "null members are left out";
    std::vector<std::pair<int, int>> model;
    const auto find = [&](int key) {
        return std::find_if(model.begin(), model.end(), [&](const auto& pair) { return pair.first == key; });
    };
    for (int step = 0; step < 4000; ++step) {
        // Grows well past the size at which the index begins, then shrinks below it again.
        const bool grows = step % 1000 < 500;
        const int key = static_cast<int>(random() % 60);
        const Ref<NSNumber> number = NSNumber::numberWithInt(key);
        const auto place = find(key);
        if (random() % 10 < (grows ? 9u : 2u)) {
            map.set(number, NSNumber::numberWithInt(step));
            if (place == model.end())
                model.emplace_back(key, step);
            else
                place->second = step;
        } else {
            ASSERT_EQ(map.remove(*number), place != model.end());
            if (place != model.end()) model.erase(place);
        }
        ASSERT_EQ(map.size(), model.size());
        for (size_t i = 0; i < model.size(); ++i) {
            ASSERT_TRUE(map.entries()[i].key->isEqual(*NSNumber::numberWithInt(model[i].first))) << "order";
        }
        const int asked = static_cast<int>(random() % 60);
        const Ref<NSObject> found = map.find(*NSNumber::numberWithLongLong(asked));
        const auto expected = find(asked);
        ASSERT_EQ(found != nullptr, expected != model.end());
        ASSERT_TRUE(!found || found->isEqual(*NSNumber::numberWithInt(expected->second)));
    }
}

TEST(NSDictionary, EqualInWhateverOrderAndDescribedInItsOwn) {
    ObjectMap ab;
    ab.set("a"_ns, NSNumber::numberWithInt(1));
    ab.set("b"_ns, NSArray::arrayWithObjects({"x"_ns}));
    ObjectMap ba;
    ba.set("b"_ns, NSArray::arrayWithObjects({"x"_ns}));
    ba.set("a"_ns, NSNumber::numberWithDouble(1));
    const Ref<NSDictionary> dictionary = NSDictionary::dictionaryWithMap(ab);
    EXPECT_TRUE(dictionary->isEqual(*NSDictionary::dictionaryWithMap(ba)));
    ba.set("a"_ns, NSNumber::numberWithInt(2));
    EXPECT_FALSE(dictionary->isEqual(*NSDictionary::dictionaryWithMap(ba)));
    EXPECT_EQ(dictionary->description(), "{a = 1; b = (x)}");
    EXPECT_EQ(NSSet::setWithObjects<NSString>({"a"_ns, "b"_ns})->description(), "{(a, b)}");
    EXPECT_EQ(NSData::dataWithBytes(std::string_view("abcde"))->description(), "<61626364 65>");
}

TEST(NSDate, DescribesTheCalendar) {
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(0)->description(), "2001-01-01T00:00:00Z");
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(-0.5)->description(), "2000-12-31T23:59:59Z");
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(-26524800)->description(), "2000-02-29T00:00:00Z");
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(1e300)->description(), "9999-12-31T23:59:59Z");
}

TEST(NSLog, FillsFormats) {
    EXPECT_EQ(stringWithFormat("%@ has %i of %u (%s)\n", {"text", -1, 4'000'000'000u, std::string("x")}),
              "text has -1 of 4000000000 (x)\n");
    EXPECT_EQ(stringWithFormat("%@", {Ref<NSString>()}), "(null)");
    EXPECT_EQ(stringWithFormat("%4i|%2i|100%%", {7, 12345}), "   7|12345|100%");
    EXPECT_EQ(stringWithFormat("%@ %@ %", {"%@"}), "%@ %@ %")
        << "arguments are not read as formats, and missing ones are not made up";
    std::string log;
    setLogHook([&](std::string_view line) { log += line; });
    NSLog("Nothing to update from!\n");
    setLogHook({});
    EXPECT_EQ(log, "Nothing to update from!\n");
}

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
}

TEST(NSGeometry, Intersections) {
    const NSRect a{{0.1f, 0.7f}, {0.3f, 1e-4f}};
    const NSRect around{{-1000, -1000}, {3000, 3000}};
    EXPECT_EQ(NSIntersectionRect(a, around), a) << "to the last bit";
    EXPECT_EQ(NSIntersectionRect({{0, 0}, {2, 2}}, {{1, -1}, {5, 2}}), (NSRect{{1, 0}, {1, 1}}));
    EXPECT_EQ(NSIntersectionRect({{0, 0}, {2, 2}}, {{2, 0}, {2, 2}}), NSRect{}) << "touching is no overlap";
    EXPECT_EQ(NSIntersectionRect({{0, 0}, {2, 2}}, {{1, 1}, {-5, 2}}), NSRect{}) << "a negative size is empty";
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
