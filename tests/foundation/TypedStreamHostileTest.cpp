#include <ctime>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/foundation/TypedStreamLimits.h"
#include "platform/foundation/TypedStreamListing.h"
#include "platform/foundation/TypedStreamTypes.h"
#include "tests/foundation/StreamBytes.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::StreamBytes;
using testing::HasSubstr;
using testing::Not;

// Memory for the tables of a new reader and one line of error.
constexpr size_t kBytesOfEmptyReader = 8192;

struct Outcome {
    std::string text;  // the error, or "(read)"
    size_t peakBytes = 0;
};

// Reads the stream both ways; the object, if any, is freed at the end.
Outcome outcomeOf(const Ref<NSData>& data) {
    test::LogCapture log;
    const test::AllocationPeak peak;
    Outcome outcome;
    {
        std::string error;
        const Ref<NSObject> object = NSUnarchiver::unarchiveObjectWithData(data, &error);
        outcome.peakBytes = peak.bytes();
        outcome.text = object ? "(read)" : error;
    }
    EXPECT_THAT(outcome.text, Not(HasSubstr("\n")));
    return outcome;
}

std::string listingErrorOf(const NSData& data) {
    std::string error = "(listed)";
    size_t longest = 0;
    listTypedStream(
        data, [&](std::string_view line) { longest = std::max(longest, line.size()); }, &error);
    EXPECT_LT(longest, 2000u);
    return error;
}

// Represents a class of a later version: its objects contain the case's data, and decoding skips them.
const CodedClassRegistration passedOver({.name = "QzPassedOver",
                                         .decode = [](NSUnarchiver&) { return Ref<NSObject>(); }});

StreamBytes array(uint32_t count) {
    StreamBytes stream("<@> ( NSArray:0 NSObject:0 ~ <i>");
    return count < 128 ? stream.byte(static_cast<int>(count)) : stream.byte(0x82).word(count, 4);
}

StreamBytes passedOverObject() {
    return StreamBytes("<@> ( QzPassedOver:0 NSObject:0 ~");
}

// A root array whose element k holds twice, or once, element k - 1.
StreamBytes tower(uint32_t levels, int width) {
    StreamBytes stream = array(levels);
    stream.ref(0).object().ref(1).ref(3).byte(0).end();
    for (uint32_t level = 1; level < levels; ++level) {
        stream.ref(0).object().ref(1).ref(3).byte(width);
        for (int i = 0; i < width; ++i) stream.ref(0).ref(2 + level);
        stream.end();
    }
    return stream.end();
}

StreamBytes nested(int depth) {
    StreamBytes stream = array(1);
    for (int i = 1; i < depth; ++i) stream.ref(0).object().ref(1).ref(3).byte(i == depth - 1 ? 0 : 1);
    for (int i = 0; i < depth; ++i) stream.end();
    return stream;
}

StreamBytes superclassChain(int length) {
    StreamBytes stream = StreamBytes().text("@").object();
    for (int i = 0; i < length; ++i) stream.cls("C" + std::to_string(i));
    return stream.nil().end();
}

// Arrays as members of a set that differ in the last of their 2^18 elements: their hashes, which are the counts, are
// alike.
StreamBytes comparedTowers() {
    constexpr uint32_t levels = 18, towers = 30;
    StreamBytes stream("<@> ( NSSet:0 NSObject:0 ~ <I> 32 ^0 ( NSString:1 ^2 <+> 1 's' ) ^0 ( NSArray:0 ^2 <i> 0 )");
    for (uint32_t k = 0; k < towers; ++k) {
        const uint32_t outermost = 7 + k * (levels + 1);
        for (uint32_t level = 0; level < levels; ++level)
            stream.add("^0 ( ^6 ^7").byte(level == 0 ? 3 : level + 1 < levels ? 2 : 0);
        for (uint32_t level = levels - 1; level > 0; --level) stream.end().ref(0).ref(outermost + level);
        stream.add("^0 ( ^4 ^5 1").byte('A' + static_cast<int>(k)).add(") )");
    }
    return stream.end();
}

// A type string stored once and used by references of one byte.
StreamBytes usedTypes(StreamBytes stream, const std::string& types, int uses) {
    stream.text(types);
    const uint32_t number = stream.bytes().find("QzPassedOver") == std::string::npos ? 0 : 3;
    for (int i = 1; i < uses; ++i) stream.byte(1).ref(number);
    return stream.byte(1);
}

TEST(TypedStreamHostile, AttacksAreRefusedByName) {
    const std::string many(1023, '!');
    const struct {
        const char* why;
        StreamBytes stream;
        const char* error;
    } cases[] = {
        {"no data at all", StreamBytes(), "the data ends where a value is expected"},
        {"objects inside each other", nested(100000), "more than 512 objects inside each other"},
        {"as deep by references: freeing it would recurse", tower(100000, 1), "by references"},
        {"doubled at each level: comparing it would never end", tower(60, 2), "more than 16777216 others"},
        {"members that take long to compare", comparedTowers(), "too many dictionary keys or set members"},
        {"an array that promises two thousand million objects", array(INT32_MAX), "a collection of 2147483647 objects"},
        {"a negative count", array(UINT32_MAX).byte(0), "a collection of -1 objects"},
        {"a text of 4 GB", StreamBytes("<@> ( NSString:1 NSObject:0 ~ <+> l0xffffffff"),
         "4294967295 bytes are expected"},
        {"data of 2 GB", StreamBytes("<@> ( NSData:0 NSObject:0 ~ <i> l0x7fffffff <[2147483647c]>"),
         "take at least 2147483647 bytes"},
        {"data of a negative length", StreamBytes("<@> ( NSData:0 NSObject:0 ~ <i> -1"), "data of -1 bytes"},
        {"collections that each promise all that is left", array(20).add("^0 ( ^1 ^3 20").raw(std::string(60, '\x92')),
         "a collection of 20 objects"},
        {"a class name of 4 GB", StreamBytes("<@> ( 0x84 0x84 l0xffffffff"), "4294967295 bytes are expected"},
        {"a superclass chain without end", superclassChain(100000), "more than 64 superclasses"},
        {"its own superclass", StreamBytes("<@> ( NSArray:0 ^1"), "its own superclass"},
        {"a superclass that is the object", StreamBytes("<@> ( NSArray:0 ^0"), "referred to as a class"},
        {"a class where an object is expected", array(1).add("^0 ^1 )"), "referred to as an object"},
        {"an entry that is not there", array(1).add("^0 ^99 )"), "entry 99 of the objects, which has 3"},
        {"a shared string that is not there", array(1).add("^99 0"), "entry 99 of the shared strings"},
        {"a reference before the first entry", array(1).add("^0 w0xff00"), "a reference to entry"},
        {"no class", StreamBytes("<@> ( ~ )"), "an object without a class"},
        {"a class without a name", StreamBytes("<@> ( 0x84 ~"), "a class without a name"},
        {"a group without types", array(1).add("~ 0"), "nil where"},
        {"an element of another type", array(1).add("<i> 1 )"), "\"i\""},
        {"groups left over", array(0).add("^0 ~ )"), "the end of an object is expected"},
        {"too few groups", array(2).add("^0 ~ )").raw(std::string(8, '\x86')), "an object ends where"},
        {"many values for one byte", usedTypes(passedOverObject(), many + "c", 20000), "more values than"},
        {"an endless loop of nothing", passedOverObject().add("<[200000!]> )"), "takes no space"},
        {"more elements than bytes", passedOverObject().add("<[4000000000[4000000000d]]> )"), "take at least"},
        {"a class that nobody knows", StreamBytes("<@> ( NSPlainWrong:0 ~"), "\"NSPlainWrong\" cannot be read"},
    };
    for (const auto& [why, stream, error] : cases) {
        const std::clock_t start = std::clock();
        const Outcome outcome = outcomeOf(stream.data());
        EXPECT_THAT(outcome.text, HasSubstr(error)) << why;
        EXPECT_LE(outcome.peakBytes,
                  16 * stream.bytes().size() + kBytesOfEmptyReader + TypedStreamLimits::kMemoryFree / 8)
            << why;
        listingErrorOf(*stream.data());
        EXPECT_LT(std::clock() - start, 10 * CLOCKS_PER_SEC) << why;
    }
}

TEST(TypedStreamHostile, TheListingRefusesWhatTheReaderRefuses) {
    const std::string many(1023, '!');
    EXPECT_THAT(listingErrorOf(*usedTypes(StreamBytes(), many + "c", 20000).data()), HasSubstr("more values than"));
    EXPECT_THAT(listingErrorOf(*nested(100000).data()), HasSubstr("more than 512 objects"));
    EXPECT_EQ(listingErrorOf(*nested(512).data()), "(listed)");
    EXPECT_EQ(outcomeOf(nested(512).data()).text, "(read)");
    EXPECT_THAT(outcomeOf(nested(513).data()).text, HasSubstr("more than 512 objects"));
}

TEST(TypedStreamHostile, MalformedTypeStrings) {
    std::vector<std::string> malformed = {std::string("c\0", 2), std::string(1025, 'c'), "[1{=" + std::string(40, '['),
                                          std::string(33, '{')};
    for (const char* types :
         {"",  "[c]", "[5]", "[5",     "[5c",     "[5cc]", "]",  "{",      "{a}",           "{a=c",
          "}", "x",   "^i",  "[2{=}]", "[2[0c]]", "[1!]",  "5c", "{a[=i}", "[4294967296c]", "[99999999999999999999c]"})
        malformed.emplace_back(types);
    for (const std::string& types : malformed) {
        std::string error;
        EXPECT_FALSE(EncodedTypes::parse(types, &error)) << types;
        EXPECT_THAT(error, HasSubstr("the type string")) << types;
    }
    struct Case {
        const char* types;
        uint64_t leastBytes;
    };
    for (const auto& [types, leastBytes] : {Case{"!", 0}, Case{"[0c]", 0}, Case{"{?=}", 0}, Case{"[3{a=ci[2f]}]@", 13},
                                            Case{"[4294967295[4294967295[4294967295c]]]", uint64_t{1} << 62}}) {
        const std::optional<EncodedTypes> parsed = EncodedTypes::parse(types, nullptr);
        ASSERT_TRUE(parsed) << types;
        EXPECT_EQ(parsed->leastBytes(), leastBytes) << types;
    }
}

TEST(TypedStreamHostile, MemoryOfManySmallPartsIsBounded) {
    // 200 strings, and sets that refer to each of them with two bytes: forty times what they are in the stream.
    constexpr uint32_t members = 200, sets = 5000;
    StreamBytes stream = array(sets + members).add("^0 ( NSString:1 ^2 <+> 1 'a' )");
    for (uint32_t i = 1; i < members; ++i)
        stream.add("^0 ( ^4 ^5 2").raw({std::string{char('a' + i / 20), char('a' + i % 20)}}).end();
    for (uint32_t k = 0; k < sets; ++k) {
        stream.ref(0).object();
        if (k == 0)
            stream.add("NSSet:0 ^2 <I>");
        else
            stream.ref(5 + members).ref(7);
        stream.byte(0x81).word(members, 2);
        for (uint32_t i = 0; i < members; ++i) stream.ref(0).ref(i == 0 ? 3 : 4 + i);
        stream.end();
    }
    const Ref<NSData> data = stream.end().data();
    const Outcome outcome = outcomeOf(data);
    EXPECT_THAT(outcome.text, HasSubstr("MB of memory"));
    EXPECT_LE(outcome.peakBytes, 16 * data->length() + TypedStreamLimits::kMemoryFree);
    EXPECT_GT(outcome.peakBytes, data->length()) << "refused too soon for what it is about";
}

TEST(TypedStreamHostile, WhatIsOddButAllowed) {
    // The same key twice: the later one wins. Groups after the root are ignored.
    std::string error;
    const Ref<NSObject> read = NSUnarchiver::unarchiveObjectWithData(
        StreamBytes("<@> ( NSDictionary:0 NSObject:0 ~ <i> 2 ^0 ( NSString:1 ^2 <+> 1 'k' ) ^0 ^3 "
                    "^0 ( ^4 ^5 1 'k' ) ^0 ( ^4 ^5 1 'v' ) ) <d> 1")
            .data(),
        &error);
    ASSERT_TRUE(read) << error;
    EXPECT_EQ(read->description(), "{k = v}");
    // An unsigned number in one byte beyond the tags, and one in a longer form than it needs.
    const StreamBytes numbers = StreamBytes("<II> 0x92 l5");
    uint32_t first = 0, second = 0;
    ASSERT_TRUE(NSUnarchiver::initForReadingWithData(numbers.data())->decodeValuesOfObjCTypes("II", {&first, &second}));
    EXPECT_EQ(first, 0x92u);
    EXPECT_EQ(second, 5u);
}

TEST(TypedStreamHostile, OtherFilesAreTold) {
    for (const std::string_view file :
         {std::string_view(""), std::string_view("bplist00"), std::string_view("\x04\x0bstreamtype")}) {
        EXPECT_THAT(outcomeOf(NSData::dataWithBytes(file)).text, HasSubstr("not a typed stream"));
    }
    std::string other = StreamBytes().bytes();
    other[0] = 3;
    EXPECT_THAT(outcomeOf(NSData::dataWithBytes(std::string_view(other))).text, HasSubstr("version 3"));
    EXPECT_NE(NSUnarchiver::initForReadingWithData(nullptr)->error(), "");
}

}  // namespace
}  // namespace qz
