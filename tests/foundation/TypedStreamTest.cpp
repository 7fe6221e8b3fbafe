#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/NSArchiver.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSNull.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/NSSet.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/NSUnarchiver.h"
#include "platform/foundation/TypedStreamListing.h"
#include "tests/foundation/StreamBytes.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::StreamBytes;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::string hex(std::string_view bytes) {
    std::string text;
    char code[4];
    for (const char c : bytes) {
        std::snprintf(code, sizeof code, "%02x ", static_cast<unsigned>(static_cast<uint8_t>(c)));
        text += code;
    }
    return text;
}

std::string archived(const Ref<NSObject>& object) {
    std::string error;
    const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(object, &error);
    return data ? std::string(data->view()) : error;
}

std::string errorOf(const Ref<NSData>& data) {
    std::string error;
    const Ref<NSObject> object = NSUnarchiver::unarchiveObjectWithData(data, &error);
    return object ? "(read) " + object->description() : error;
}

std::vector<std::string> listing(const NSData& data, std::string* error = nullptr) {
    std::vector<std::string> lines;
    listTypedStream(
        data, [&](std::string_view line) { lines.emplace_back(line); }, error);
    return lines;
}

// The class of the format's first worked example.
class QzExample : public NSObject {
public:
    uint32_t count = 0;
    std::string characters;
    Ref<NSString> first;
    Ref<NSString> second;
    std::string className() const override { return "QzExample"; }
};

const CodedClassRegistration exampleRegistration(
    {.name = "QzExample",
     .version = 1,
     .encode =
         [](const NSObject& object, NSArchiver& archiver) {
             const auto& example = static_cast<const QzExample&>(object);
             archiver.encodeUnsignedInt(example.count);
             archiver.encodeValueOfObjCType("[5c]", std::string_view(example.characters));
             archiver.encodeObject(example.first);
             archiver.encodeObject(example.second);
         },
     .decode = [](NSUnarchiver& unarchiver) -> Ref<NSObject> {
         if (unarchiver.versionForClassName("QzExample") != 1) return {};
         const auto example = std::make_shared<QzExample>();
         example->count = unarchiver.decodeUnsignedInt().value_or(0);
         example->characters = unarchiver.decodeArrayOfObjCType('c', 5).value_or("");
         example->first = unarchiver.decodeObjectOfClass<NSString>("NSString");
         example->second = unarchiver.decodeObjectOfClass<NSString>("NSString");
         return example;
     }});

// A node that its children refer to.
class QzNode : public NSObject {
public:
    WeakRef<NSObject> parent;
    Ref<NSObject> child;
    std::string className() const override { return "QzNode"; }
};

const CodedClassRegistration nodeRegistration({.name = "QzNode",
                                               .encode =
                                                   [](const NSObject& object, NSArchiver& archiver) {
                                                       archiver.encodeObject(
                                                           static_cast<const QzNode&>(object).parent.lock());
                                                       archiver.encodeObject(static_cast<const QzNode&>(object).child);
                                                   },
                                               .allocate = []() -> Ref<NSObject> { return std::make_shared<QzNode>(); },
                                               .fill =
                                                   [](NSObject& object, NSUnarchiver& unarchiver) {
                                                       auto& node = static_cast<QzNode&>(object);
                                                       node.parent = unarchiver.decodeObject();
                                                       node.child = unarchiver.decodeObject();
                                                       return !unarchiver.hasFailed();
                                                   }});

// A class whose objects another one stands in for, as a palette's keys do for those of an archive.
const Ref<NSString> stand_in = "the palette's own"_ns;
const CodedClassRegistration replacedRegistration({.name = "QzReplaced",
                                                   .version = 1,
                                                   .decode = [](NSUnarchiver& unarchiver) -> Ref<NSObject> {
                                                       if (unarchiver.versionForClassName("QzReplaced") != 1) return {};
                                                       return unarchiver.decodeObject() ? stand_in : nullptr;
                                                   }});

const std::string exampleBytes =
    "04 0b 73 74 72 65 61 6d 74 79 70 65 64 81 e8 03 84 01 40 84 84 84 09 51 7a 45 78 61 6d 70 6c 65 01 84 84 08 4e 53 "
    "4f 62 6a 65 63 74 00 85 84 01 49 81 2c 01 84 04 5b 35 63 5d 30 31 31 30 31 92 84 84 84 08 4e 53 53 74 72 69 6e 67 "
    "01 94 84 01 2b 05 54 69 74 6c 65 86 92 95 86 ";

TEST(TypedStream, WritesAndReadsTheWorkedExample) {
    const auto example = std::make_shared<QzExample>();
    example->count = 300;
    example->characters = "01101";
    example->first = example->second = "Title"_ns;
    const std::string bytes = archived(example);
    EXPECT_EQ(hex(bytes), exampleBytes);

    const auto read = std::dynamic_pointer_cast<QzExample>(
        NSUnarchiver::unarchiveObjectWithData(NSData::dataWithBytes(std::string_view(bytes))));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->count, 300u);
    EXPECT_EQ(read->characters, "01101");
    EXPECT_EQ(read->first->utf8(), "Title");
    EXPECT_EQ(read->first, read->second) << "one object, met twice";
}

// "Size" -> 40.5, in the chain of the mutable class or in that of ours, which has one class and one shared string less.
StreamBytes dictionaryStream(bool isMutable) {
    const uint32_t more = isMutable ? 1 : 0;
    StreamBytes stream;
    stream.text("@").object();
    if (isMutable) stream.cls("NSMutableDictionary");
    stream.cls("NSDictionary").cls("NSObject").nil().text("i").byte(1);
    stream.ref(0).object().cls("NSString", 1).ref(2 + more).text("+").byte(4).raw("Size").end();
    stream.ref(0).object().cls("NSNumber").cls("NSValue").ref(2 + more).text("*").byte(0x84).text("f");
    return stream.ref(9 + more).byte(0x83).raw({"\0\0\x22\x42", 4}).end().end();
}

TEST(TypedStream, ReadsMutableClassesAndWritesOurs) {
    ASSERT_EQ(dictionaryStream(true).bytes().size(), 141u);
    for (const bool isMutable : {true, false}) {
        const auto read = std::dynamic_pointer_cast<NSDictionary>(
            NSUnarchiver::unarchiveObjectWithData(dictionaryStream(isMutable).data()));
        ASSERT_TRUE(read && read->count() == 1);
        EXPECT_TRUE(read->objectForKey(*"Size"_ns)->isEqual(*NSNumber::numberWithFloat(40.5f)));
        EXPECT_EQ(hex(archived(read)), hex(dictionaryStream(false).bytes()));
    }
}

struct IntegerCase {
    const char* code;
    int64_t value;
    const char* littleEndian;
    const char* bigEndian;
};

// Every place where the form changes, from both sides.
const IntegerCase integerCases[] = {
    {"i", 0, "00", "00"},
    {"i", 127, "7f", "7f"},
    {"i", 128, "81 80 00", "81 00 80"},
    {"i", -110, "92", "92"},
    {"i", -111, "81 91 ff", "81 ff 91"},
    {"i", -128, "81 80 ff", "81 ff 80"},
    {"s", 32767, "81 ff 7f", "81 7f ff"},
    {"s", -32768, "81 00 80", "81 80 00"},
    {"i", 32768, "82 00 80 00 00", "82 00 00 80 00"},
    {"l", -32769, "82 ff 7f ff ff", "82 ff ff 7f ff"},
    {"i", INT32_MAX, "82 ff ff ff 7f", "82 7f ff ff ff"},
    {"i", INT32_MIN, "82 00 00 00 80", "82 80 00 00 00"},
    {"q", -1, "ff", "ff"},
    {"q", int64_t{INT32_MAX} + 1, "87 00 00 00 80 00 00 00 00", "87 00 00 00 00 80 00 00 00"},
    {"q", INT64_MIN, "87 00 00 00 00 00 00 00 80", "87 80 00 00 00 00 00 00 00"},
    {"I", 127, "7f", "7f"},
    {"I", 128, "81 80 00", "81 00 80"},
    {"S", 65535, "81 ff ff", "81 ff ff"},
    {"L", 65536, "82 00 00 01 00", "82 00 01 00 00"},
    {"I", UINT32_MAX, "82 ff ff ff ff", "82 ff ff ff ff"},
    {"Q", int64_t{UINT32_MAX} + 1, "87 00 00 00 00 01 00 00 00", "87 00 00 00 01 00 00 00 00"},
    {"c", -1, "ff", "ff"},
    {"c", -123, "85", "85"},
    {"C", 134, "86", "86"},
    {"B", 1, "01", "01"},
};

// "81 80" as two bytes.
std::string bytesOf(std::string_view hexText) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hexText.size(); i += 3) {
        bytes += static_cast<char>(std::stoi(std::string(hexText.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

TEST(TypedStream, IntegersTakeTheShortestFormInBothByteOrders) {
    for (const auto& [code, value, littleEndian, bigEndian] : integerCases) {
        const Ref<NSArchiver> archiver = NSArchiver::init();
        archiver->encodeValueOfObjCType(code, value);
        const StreamBytes little = StreamBytes().text(code).raw(bytesOf(littleEndian));
        EXPECT_EQ(hex(archiver->archiverData()->view()), hex(little.bytes())) << code << value;
        for (const auto& stream : {little, StreamBytes(true).text(code).raw(bytesOf(bigEndian))}) {
            const auto unarchiver = NSUnarchiver::initForReadingWithData(stream.data());
            int64_t read = 0;
            EXPECT_TRUE(unarchiver->decodeValueOfObjCType(code, &read)) << unarchiver->error();
            EXPECT_EQ(read, value) << code;
            EXPECT_TRUE(unarchiver->isAtEnd());
            EXPECT_EQ(unarchiver->systemVersion(), 1000u);
        }
    }
}

TEST(TypedStream, RefusesIntegersThatAreNoneOfTheirType) {
    struct Case {
        const char* code;
        const char* bytes;
        const char* why;
    };
    const Case cases[] = {
        {"i", "80", "reserved"},
        {"i", "88", "reserved"},
        {"i", "91", "reserved"},
        {"i", "83 00 00", "a real"},
        {"i", "87 01 00 00 00 00 00 00 00", "64 bits belong to q and Q"},
        {"s", "82 00 00 01 00", "beyond 16 bits"},
        {"S", "82 00 00 01 00", "beyond 16 bits"},
        {"I", "85", "nil"},
        {"q", "87 01 00 00 00 00 00 00", "one byte short"},
        {"d", "83 00 00 00 00 00 00 00", "one byte short"},
    };
    for (const auto& [code, bytes, why] : cases) {
        const auto unarchiver =
            NSUnarchiver::initForReadingWithData(StreamBytes().text(code).raw(bytesOf(bytes)).data());
        int64_t integer = 0;
        double real = 0;
        CodedSlot slot = &integer;
        if (*code == 'd') slot = &real;
        EXPECT_FALSE(unarchiver->decodeValueOfObjCType(code, slot)) << code << " " << bytes << ": " << why;
        EXPECT_THAT(unarchiver->error(), HasSubstr("byte ")) << why;
    }
    const Ref<NSArchiver> archiver = NSArchiver::init();
    EXPECT_FALSE(archiver->encodeValueOfObjCType("c", 128));
    EXPECT_FALSE(archiver->archiverData()) << "nothing is written that says another number";
}

TEST(TypedStream, RealsKeepEveryBit) {
    const double reals[] = {0.0,          -0.0,      1.0,    -110.0,      -111.0,      127.0,
                            128.0,        0.5,       1e300,  2147483647., 2147483648., -2147483648.,
                            -2147483649., 16777217., 5e-324, INFINITY,    -INFINITY,   NAN};
    for (const double real : reals) {
        const auto single = static_cast<float>(real);
        const Ref<NSArchiver> archiver = NSArchiver::init();
        archiver->encodeValuesOfObjCTypes("df", {real, double{single}});
        const auto unarchiver = NSUnarchiver::initForReadingWithData(archiver->archiverData());
        double readReal = 7;
        float readSingle = 7;
        ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("df", {&readReal, &readSingle}));
        EXPECT_EQ(std::bit_cast<uint64_t>(readReal), std::bit_cast<uint64_t>(real)) << real;
        EXPECT_EQ(std::bit_cast<uint32_t>(readSingle), std::bit_cast<uint32_t>(single)) << real;
    }
    const auto encoded = [](double real) {
        const Ref<NSArchiver> archiver = NSArchiver::init();
        archiver->encodeDouble(real);
        return hex(archiver->archiverData()->view().substr(19));
    };
    EXPECT_EQ(encoded(2147483647.), "82 ff ff ff 7f ") << "whole, and within 32 bits";
    EXPECT_EQ(encoded(2147483648.), "83 00 00 00 00 00 00 e0 41 ");
    EXPECT_EQ(encoded(-0.0), "83 00 00 00 00 00 00 00 80 ");

    double readReal = 0;
    float readSingle = 0;
    const StreamBytes big =
        StreamBytes(true).text("df").byte(0x83).word(0x3FE0000000000000, 8).byte(0x83).word(0x42220000, 4);
    const auto unarchiver = NSUnarchiver::initForReadingWithData(big.data());
    ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("df", {&readReal, &readSingle}));
    EXPECT_EQ(readReal, 0.5);
    EXPECT_EQ(readSingle, 40.5f);
}

TEST(TypedStream, GroupsOfStructuresArraysAndStringsGoLeafByLeaf) {
    const Ref<NSArchiver> archiver = NSArchiver::init();
    const std::string_view bits("\0\x86\xff", 3);
    ASSERT_TRUE(
        archiver->encodeValuesOfObjCTypes("{_NSRect={_NSPoint=ff}{_NSSize=ff}}[2i]!", {1.0, 2.5, -3.0, 4.0, 5, 600}));
    ASSERT_TRUE(archiver->encodeValuesOfObjCTypes("[3c]*%:+#*", {bits, "q", "atom", "set:", bits, "NSNumber", "q"}));
    const auto unarchiver = NSUnarchiver::initForReadingWithData(archiver->archiverData());
    float x = 0, y = 0, width = 0, height = 0;
    int32_t first = 0, second = 0;
    ASSERT_TRUE(unarchiver->decodeValuesOfObjCTypes("{_NSRect={_NSPoint=ff}{_NSSize=ff}}[2i]!",
                                                    {&x, &y, &width, &height, &first, &second}));
    EXPECT_THAT((std::vector<float>{x, y, width, height}), ElementsAre(1, 2.5, -3, 4));
    EXPECT_THAT((std::vector<int32_t>{first, second}), ElementsAre(5, 600));
    std::string_view raw, cString, atom, selector, bytes, cls, again;
    EXPECT_EQ(unarchiver->typesOfNextGroup(), "[3c]*%:+#*");
    ASSERT_TRUE(
        unarchiver->decodeValuesOfObjCTypes("[3c]*%:+#*", {&raw, &cString, &atom, &selector, &bytes, &cls, &again}));
    EXPECT_THAT((std::vector<std::string_view>{raw, cString, atom, selector, bytes, cls, again}),
                ElementsAre(bits, "q", "atom", "set:", bits, "NSNumber", "q"));
    EXPECT_EQ(unarchiver->versionForClassName("NSValue"), 0) << "from the chain of a class";
    EXPECT_EQ(unarchiver->versionForClassName("NSString"), std::nullopt);
    EXPECT_EQ(unarchiver->typesOfNextGroup(), std::nullopt);
    EXPECT_TRUE(unarchiver->isAtEnd());
}

TEST(TypedStream, ReferencesPastOneByteKeepIdentity) {
    // 400 objects: numbers beyond 237 are written with 16 bits.
    std::vector<Ref<NSObject>> elements;
    for (int i = 0; i < 400; ++i) elements.push_back(NSString::stringWithUTF8String("s" + std::to_string(i)));
    for (int i = 0; i < 400; ++i) elements.push_back(elements[static_cast<size_t>(i)]);
    const std::string bytes = archived(NSArray::arrayWithObjects(elements));
    const auto read = std::dynamic_pointer_cast<NSArray>(
        NSUnarchiver::unarchiveObjectWithData(NSData::dataWithBytes(std::string_view(bytes))));
    ASSERT_TRUE(read && read->isEqual(*NSArray::arrayWithObjects(elements)));
    for (size_t i = 0; i < 400; ++i) EXPECT_EQ(read->elements()[i], read->elements()[i + 400]);
}

TEST(TypedStream, TemporariesOfAnEncodeFunctionAreObjectsOfTheirOwn) {
    // Each number dies after it is written; the next one may get its address.
    const Ref<NSArchiver> archiver = NSArchiver::init();
    for (int i = 0; i < 50; ++i) archiver->encodeObject(NSNumber::numberWithInt(i));
    const auto unarchiver = NSUnarchiver::initForReadingWithData(archiver->archiverData());
    for (int i = 0; i < 50; ++i) EXPECT_EQ(unarchiver->decodeObjectOfClass<NSNumber>("NSNumber")->intValue(), i);
    EXPECT_TRUE(unarchiver->isAtEnd());
}

TEST(TypedStream, ObjectsThatReferToTheirParentEndAndAreFreed) {
    const auto parent = std::make_shared<QzNode>();
    const auto child = std::make_shared<QzNode>();
    parent->child = child;
    child->parent = parent;
    const std::string bytes = archived(parent);
    WeakRef<NSObject> watched;
    {
        const auto read = std::dynamic_pointer_cast<QzNode>(
            NSUnarchiver::unarchiveObjectWithData(NSData::dataWithBytes(std::string_view(bytes))));
        ASSERT_TRUE(read);
        EXPECT_EQ(static_cast<QzNode&>(*read->child).parent.lock(), read);
        watched = read;
    }
    EXPECT_TRUE(watched.expired());

    // An array that holds itself cannot be made.
    const StreamBytes cycle =
        StreamBytes().text("@").object().cls("NSArray").cls("NSObject").nil().text("i").byte(1).ref(0).ref(0).end();
    EXPECT_THAT(errorOf(cycle.data()), AllOf(HasSubstr("byte 49"), HasSubstr("holds itself")));
}

TEST(TypedStream, AnObjectThatStandsInIsWhatReferencesGet) {
    StreamBytes stream;
    stream.text("@").object().cls("NSArray").cls("NSObject").nil().text("i").byte(2);
    stream.ref(0).object().cls("QzReplaced", 1).ref(2).ref(0).object().cls("NSNull").ref(2).end().end();
    stream.ref(0).ref(3).end();
    const auto read = std::dynamic_pointer_cast<NSArray>(NSUnarchiver::unarchiveObjectWithData(stream.data()));
    ASSERT_TRUE(read);
    EXPECT_THAT(read->elements(), ElementsAre(stand_in, stand_in));
}

TEST(TypedStream, AnObjectThatDecodesAsNoneLeavesTheRestReadable) {
    // The object of an unknown version holds one of an unknown class and a string that is referred to later.
    StreamBytes stream;
    stream.text("@").object().cls("NSDictionary").cls("NSObject").nil().text("i").byte(2);
    stream.ref(0).object().cls("QzReplaced", 9).ref(2);
    stream.text("{?=@[2@]!}").object().cls("Unknown").ref(2).text("d").byte(5).end();
    stream.object().cls("NSString", 1).ref(2).text("+").byte(4).raw("kept").end().nil().end();
    stream.ref(0).object().ref(8).ref(9).byte(1).raw("v").end();
    stream.ref(0).ref(7).ref(0).ref(7).end();
    test::LogCapture log;
    std::string error;
    const auto read =
        std::dynamic_pointer_cast<NSDictionary>(NSUnarchiver::unarchiveObjectWithData(stream.data(), &error));
    ASSERT_TRUE(read) << error;
    EXPECT_EQ(read->description(), "{kept = kept}");
    EXPECT_THAT(log.lines(), ElementsAre("1 of 2 entries of a dictionary decode as no object and are dropped\n"));
}

TEST(TypedStream, KindsOfNumbers) {
    struct Case {
        const char* type;
        const char* bytes;
        Ref<NSNumber> expected;
    };
    const Case cases[] = {
        {"c", "01", NSNumber::numberWithBool(true)},
        {"c", "c8", NSNumber::numberWithInt(-56)},
        {"B", "00", NSNumber::numberWithBool(false)},
        {"C", "c8", NSNumber::numberWithInt(200)},
        {"s", "81 00 80", NSNumber::numberWithInt(-32768)},
        {"I", "82 ff ff ff ff", NSNumber::numberWithLongLong(UINT32_MAX)},
        {"L", "05", NSNumber::numberWithInt(5)},
        {"q", "05", NSNumber::numberWithLongLong(5)},
        {"Q", "87 ff ff ff ff ff ff ff 7f", NSNumber::numberWithLongLong(INT64_MAX)},
        {"d", "03", NSNumber::numberWithDouble(3)},
    };
    const auto number = [](std::string_view type) {
        return StreamBytes()
            .text("@")
            .object()
            .cls("NSNumber")
            .cls("NSValue")
            .cls("NSObject")
            .nil()
            .text("*")
            .byte(0x84)
            .text(type);
    };
    for (const auto& [type, bytes, expected] : cases) {
        const StreamBytes stream = number(type).ref(5).raw(bytesOf(bytes)).end();
        const auto read = std::dynamic_pointer_cast<NSNumber>(NSUnarchiver::unarchiveObjectWithData(stream.data()));
        ASSERT_TRUE(read) << type << errorOf(stream.data());
        EXPECT_EQ(read->value(), expected->value()) << type;
    }
    EXPECT_THAT(errorOf(number("Q").ref(5).raw(bytesOf("87 ff ff ff ff ff ff ff ff")).end().data()),
                HasSubstr("too large"));
    EXPECT_THAT(errorOf(number("{CGSize=dd}").ref(5).byte(1).byte(1).end().data()), HasSubstr("{CGSize=dd}"));
    EXPECT_THAT(errorOf(number("i").text("d").byte(1).end().data()), HasSubstr("\"d\""));
}

TEST(TypedStream, DamagedCharactersDoNotCostTheText) {
    test::LogCapture log;
    const StreamBytes stream = StreamBytes()
                                   .text("@")
                                   .object()
                                   .cls("NSString", 1)
                                   .cls("NSObject")
                                   .nil()
                                   .text("+")
                                   .byte(3)
                                   .raw(
                                       "a\xff"
                                       "b")
                                   .end();
    EXPECT_EQ(errorOf(stream.data()),
              "(read) a\xEF\xBF\xBD"
              "b");
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("UTF-8")));
    log.clear();
    EXPECT_EQ(errorOf(NSArchiver::archivedDataWithRootObject("\xEF\xBF\xBD"_ns)), "(read) \xEF\xBF\xBD");
    EXPECT_THAT(log.lines(), ElementsAre()) << "U+FFFD itself is no damage";
}

// Holds what cannot be written, and says where.
class QzUncoded : public NSObject {
public:
    std::string className() const override { return "QzUncoded"; }
};

TEST(TypedStream, AnArchiveFailsAsAWholeAndSaysWhere) {
    ObjectMap inner;
    inner.set("Font\n"_ns, NSArray::arrayWithObjects({NSNull::null(), std::make_shared<QzUncoded>()}));
    std::string error;
    EXPECT_FALSE(NSArchiver::archivedDataWithRootObject(NSDictionary::dictionaryWithMap(inner), &error));
    EXPECT_EQ(error, "NSDictionary > \"Font \" > NSArray > element 1 > an object of class QzUncoded has no coded form");

    Ref<NSObject> nested = NSArray::array();
    for (int i = 1; i < 512; ++i) nested = NSArray::arrayWithObjects({nested});
    EXPECT_THAT(errorOf(NSArchiver::archivedDataWithRootObject(nested)), HasSubstr("(read)"));
    EXPECT_FALSE(NSArchiver::archivedDataWithRootObject(NSArray::arrayWithObjects({nested}), &error));
    EXPECT_THAT(error, HasSubstr("more than 512 objects inside each other"));

    // The same depth, reached through an object that is written before.
    const Ref<NSArchiver> archiver = NSArchiver::init();
    EXPECT_TRUE(archiver->encodeObject(nested));
    EXPECT_FALSE(archiver->encodeObject(NSArray::arrayWithObjects({nested})));
    EXPECT_FALSE(archiver->archiverData());
}

TEST(TypedStream, ListsWhatItsReadersKnowAndWhatNot) {
    StreamBytes stream(true);
    stream.text("@")
        .object()
        .cls("Unknown", 7)
        .cls("NSObject")
        .nil()
        .text("@*")
        .ref(0)
        .byte(0x84)
        .text("a\"\n")
        .text("[2C]")
        .raw("\x01\xff")
        .end();
    stream.text("{P=fd}").byte(1).byte(0x83).word(0x3FE0000000000000, 8).ref(0).ref(0);
    std::string error;
    EXPECT_THAT(listing(*stream.data(), &error),
                ElementsAre("typed stream, version 4, big-endian, system version 1000",  //
                            "000013  @  #0 Unknown v7 : NSObject v0",                    //
                            "00002c    \"@*\"",                                          //
                            "000030      @  -> #0 Unknown v7",                           //
                            "000031      *  #3 \"a\\\"\\x0a\"",                          //
                            "000037    \"[2C]\"",                                        //
                            "00003d      [2]  01 ff",                                    //
                            "000040  \"{P=fd}\"",                                        //
                            "000048    f  1",                                            //
                            "000049    d  0.5",                                          //
                            "000053  @  -> #0 Unknown v7"));
    EXPECT_EQ(error, "");
    stream.end();
    listing(*stream.data(), &error);
    EXPECT_THAT(error, HasSubstr("byte 84: the end of an object"));
}

// Files that other programs wrote; they are not part of this tree.
class Samples : public testing::Test {
protected:
    void SetUp() override {
        const char* const folder = std::getenv("QZANNO_SAMPLES");
        if (!folder) GTEST_SKIP() << "QZANNO_SAMPLES names no folder of typed streams";
        folder_ = folder;
    }

    Ref<NSData> read(const std::string& name) const {
        std::ifstream file(std::filesystem::path(folder_) / name, std::ios::binary);
        EXPECT_TRUE(file) << name;
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        return NSData::dataWithBytes(std::string_view(bytes));
    }

    std::string folder_;
};

TEST_F(Samples, DecodeToWhatTheyHoldAndAreWrittenByteForByte) {
    ObjectMap map;
    map.set("k2"_ns, "v"_ns);
    map.set("k1"_ns, NSNumber::numberWithLongLong(1));
    const auto url = [](std::string_view text, Ref<NSURL> base = {}) {
        return NSURL::URLWithString(NSString::stringWithUTF8String(text), std::move(base));
    };
    const std::pair<const char*, Ref<NSObject>> files[] = {
        {"NSDictionary.typedstream", NSDictionary::dictionaryWithMap(map)},
        {"NumberFloat.typedstream", NSNumber::numberWithFloat(3.5f)},
        {"NSDateFractional.typedstream", NSDate::dateWithTimeIntervalSinceReferenceDate(700000000.523)},
        {"NestedScalars.typedstream",
         NSArray::arrayWithObjects({NSDate::dateWithTimeIntervalSinceReferenceDate(1000000000 - 978307200),
                                    url("https://example.com/path?q=1"),
                                    url("page.html", url("https://example.com/dir/")), NSNull::null()})},
    };
    for (const auto& [name, expected] : files) {
        const Ref<NSData> data = read(name);
        std::string error;
        const Ref<NSObject> object = NSUnarchiver::unarchiveObjectWithData(data, &error);
        ASSERT_TRUE(object) << name << ": " << error;
        EXPECT_TRUE(object->isEqual(*expected)) << name << ": " << object->description();
        EXPECT_EQ(hex(archived(object)), hex(data->view())) << name;
    }
}

TEST_F(Samples, AnInterfaceFileIsListedWholeAndRefusedByName) {
    const Ref<NSData> data = read("PseudoTerminal-objects.nib");
    EXPECT_THAT(errorOf(data), AllOf(HasSubstr("byte "), HasSubstr("\"NSIBObjectData\"")));
    std::string error;
    const std::vector<std::string> lines = listing(*data, &error);
    EXPECT_EQ(error, "");
    EXPECT_THAT(lines, testing::Contains(HasSubstr("#0 NSIBObjectData v224 : NSObject v0")));
    EXPECT_THAT(lines, testing::Contains(HasSubstr("NSCustomObject v41")));
    EXPECT_THAT(lines, testing::Contains(HasSubstr("#8 NSMutableSet v0 : NSSet v0")));
    EXPECT_THAT(lines.back(), HasSubstr("\"IBCocoaFramework\""));
}

}  // namespace
}  // namespace qz
