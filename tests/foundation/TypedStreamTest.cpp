#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSNull.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/ObjectMap.h"
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

template <class T>
Ref<T> unarchived(const StreamBytes& stream) {
    return std::dynamic_pointer_cast<T>(NSUnarchiver::unarchiveObjectWithData(stream.data()));
}

std::vector<std::string> listing(const NSData& data, std::string* error = nullptr) {
    std::vector<std::string> lines;
    listTypedStream(
        data, [&](std::string_view line) { lines.emplace_back(line); }, error);
    return lines;
}

// A node that its children refer to.
class QzNode : public NSObject {
public:
    WeakRef<NSObject> parent;
    Ref<NSObject> child;
    std::string className() const override { return "QzNode"; }
};

void encodeNode(const NSObject& object, NSArchiver& archiver) {
    archiver.encodeObject(static_cast<const QzNode&>(object).parent.lock());
    archiver.encodeObject(static_cast<const QzNode&>(object).child);
}

bool fillNode(NSObject& object, NSUnarchiver& unarchiver) {
    static_cast<QzNode&>(object).parent = unarchiver.decodeObject();
    static_cast<QzNode&>(object).child = unarchiver.decodeObject();
    return !unarchiver.hasFailed();
}

const CodedClassRegistration nodeRegistration({.name = "QzNode",
                                               .encode = encodeNode,
                                               .allocate = []() -> Ref<NSObject> { return std::make_shared<QzNode>(); },
                                               .fill = fillNode});

// A class whose objects are replaced on reading, as an archive's keys are by a palette's.
const Ref<NSString> stand_in = "the palette's own"_ns;
const CodedClassRegistration replacedRegistration({.name = "QzReplaced",
                                                   .version = 1,
                                                   .decode = [](NSUnarchiver& unarchiver) -> Ref<NSObject> {
                                                       if (unarchiver.versionForClassName("QzReplaced") != 1) return {};
                                                       return unarchiver.decodeObject() ? stand_in : nullptr;
                                                   }});

TEST(TypedStream, ReadsMutableClassesAndWritesOurs) {
    // "Size" -> 40.5, in the chain of the mutable class, and in that of ours, with one class and one shared string
    // less.
    const StreamBytes mutableStream(
        "<@> ( NSMutableDictionary:0 NSDictionary:0 NSObject:0 ~ <i> 1 ^0 ( NSString:1 ^3 <+> 4 'Size' ) "
        "^0 ( NSNumber:0 NSValue:0 ^3 <*> 0x84 <f> ^10 0x83 0 0 0x22 0x42 ) )");
    const StreamBytes ours(
        "<@> ( NSDictionary:0 NSObject:0 ~ <i> 1 ^0 ( NSString:1 ^2 <+> 4 'Size' ) "
        "^0 ( NSNumber:0 NSValue:0 ^2 <*> 0x84 <f> ^9 0x83 0 0 0x22 0x42 ) )");
    for (const StreamBytes& stream : {mutableStream, ours}) {
        const auto read = unarchived<NSDictionary>(stream);
        ASSERT_TRUE(read && read->count() == 1);
        EXPECT_TRUE(read->objectForKey(*"Size"_ns)->isEqual(*NSNumber::numberWithFloat(40.5f)));
        EXPECT_EQ(hex(archived(read)), hex(ours.bytes()));
    }
}

// "81 80" as two bytes.
std::string bytesOf(std::string_view hexText) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hexText.size(); i += 3) {
        bytes += static_cast<char>(std::stoi(std::string(hexText.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

TEST(TypedStream, IntegersTakeTheShortestFormInBothByteOrders) {
    // Both sides of every boundary between forms.
    const struct {
        const char* code;
        int64_t value;
        const char *littleEndian, *bigEndian;
    } cases[] = {
        {"i", 127, "7f", "7f"},
        {"i", 128, "81 80 00", "81 00 80"},
        {"i", -110, "92", "92"},
        {"i", -111, "81 91 ff", "81 ff 91"},
        {"s", 32767, "81 ff 7f", "81 7f ff"},
        {"s", -32768, "81 00 80", "81 80 00"},
        {"i", 32768, "82 00 80 00 00", "82 00 00 80 00"},
        {"l", -32769, "82 ff 7f ff ff", "82 ff ff 7f ff"},
        {"i", INT32_MIN, "82 00 00 00 80", "82 80 00 00 00"},
        {"q", int64_t{INT32_MAX} + 1, "87 00 00 00 80 00 00 00 00", "87 00 00 00 00 80 00 00 00"},
        {"q", INT64_MIN, "87 00 00 00 00 00 00 00 80", "87 80 00 00 00 00 00 00 00"},
        {"S", 65535, "81 ff ff", "81 ff ff"},
        {"L", 65536, "82 00 00 01 00", "82 00 01 00 00"},
        {"Q", int64_t{UINT32_MAX} + 1, "87 00 00 00 00 01 00 00 00", "87 00 00 00 01 00 00 00 00"},
        {"c", -123, "85", "85"},
        {"C", 134, "86", "86"},
        {"B", 1, "01", "01"},
    };
    for (const auto& [code, value, littleEndian, bigEndian] : cases) {
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
        }
    }
}

TEST(TypedStream, RefusesIntegersThatAreNoneOfTheirType) {
    const struct {
        const char *code, *bytes, *why;
    } cases[] = {
        {"i", "80", "reserved"},
        {"i", "88", "reserved"},
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

TEST(TypedStream, RealsKeepEveryBitInTheirShortestForm) {
    const struct {
        double real;
        const char* bytes;
    } cases[] = {
        {2147483647., "82 ff ff ff 7f "},
        {2147483648., "83 00 00 00 00 00 00 e0 41 "},
        {-0.0, "83 00 00 00 00 00 00 00 80 "},
        {0.5, "83 00 00 00 00 00 00 e0 3f "},
        {5e-324, "83 01 00 00 00 00 00 00 00 "},
        {-INFINITY, "83 00 00 00 00 00 00 f0 ff "},
        {-110, "92 "},
        {-111, "81 91 ff "},
    };
    for (const auto& [real, bytes] : cases) {
        const Ref<NSArchiver> archiver = NSArchiver::init();
        archiver->encodeDouble(real);
        EXPECT_EQ(hex(archiver->archiverData()->view().substr(19)), bytes);
        const auto read = NSUnarchiver::initForReadingWithData(archiver->archiverData())->decodeDouble();
        EXPECT_EQ(std::bit_cast<uint64_t>(read.value_or(7)), std::bit_cast<uint64_t>(real)) << real;
    }
    double real = 0;
    float single = 0;
    const StreamBytes big =
        StreamBytes(true).text("df").byte(0x83).word(0x3FE0000000000000, 8).byte(0x83).word(0x42220000, 4);
    ASSERT_TRUE(NSUnarchiver::initForReadingWithData(big.data())->decodeValuesOfObjCTypes("df", {&real, &single}));
    EXPECT_EQ(real, 0.5);
    EXPECT_EQ(single, 40.5f);
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

TEST(TypedStream, TemporariesOfAnEncodeFunctionAreObjectsOfTheirOwn) {
    // Each number dies after it is written; the next one may get its address.
    const Ref<NSArchiver> archiver = NSArchiver::init();
    for (int i = 0; i < 50; ++i) archiver->encodeObject(NSNumber::numberWithInt(i));
    const auto unarchiver = NSUnarchiver::initForReadingWithData(archiver->archiverData());
    for (int i = 0; i < 50; ++i) EXPECT_EQ(unarchiver->decodeObjectOfClass<NSNumber>("NSNumber")->intValue(), i);
    EXPECT_TRUE(unarchiver->isAtEnd());
}

/// Random objects, of which later ones hold earlier ones, so that many stand in several places.
Ref<NSObject> randomGraph(uint32_t seed, uint32_t size) {
    std::mt19937 random(seed);
    std::vector<Ref<NSObject>> pool = {NSNull::null()};
    const auto known = [&] { return pool[random() % pool.size()]; };
    while (pool.size() < size) {
        // Of every magnitude, to cover each length of the coded form.
        const auto integer = static_cast<int64_t>(uint64_t{random()} << 32 | random()) >> random() % 64;
        const std::string text(random() % 40 ? random() % 12 : 300, static_cast<char>('a' + random() % 26));
        const Ref<NSString> string = NSString::stringWithUTF8String(text + "\u00E9\U0001F600");
        ObjectMap map;
        map.set(string, known());
        map.set(known(), known());
        const Ref<NSObject> made[] = {string,
                                      NSNumber::numberWithBool(integer & 1),
                                      NSNumber::numberWithInt(static_cast<int32_t>(integer)),
                                      NSNumber::numberWithLongLong(integer),
                                      NSNumber::numberWithFloat(static_cast<float>(integer) / 8),
                                      NSNumber::numberWithDouble(static_cast<double>(integer) / 8),
                                      NSData::dataWithBytes(std::string_view(text)),
                                      NSDate::dateWithTimeIntervalSinceReferenceDate(static_cast<double>(integer) / 3),
                                      NSURL::URLWithString(string, std::dynamic_pointer_cast<NSURL>(known())),
                                      NSArray::arrayWithObjects({known(), known()}),
                                      NSSet::setWithObjects<NSObject>({known(), known()}),
                                      NSDictionary::dictionaryWithMap(map)};
        pool.push_back(made[random() % std::size(made)]);
    }
    return NSArray::arrayWithObjects(pool);
}

TEST(TypedStream, GraphsKeepValuesShapeAndSharing) {
    const uint32_t first = std::random_device()();
    for (uint32_t seed = first; seed != first + 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        // Numbers of objects beyond 237 are written with 16 bits.
        const Ref<NSObject> graph = randomGraph(seed, seed % 50 == 0 ? 500 : 1 + seed % 80);
        const std::string bytes = archived(graph);
        std::string error;
        const auto read = NSUnarchiver::unarchiveObjectWithData(NSData::dataWithBytes(std::string_view(bytes)), &error);
        ASSERT_TRUE(read) << error;
        ASSERT_TRUE(read->isEqual(*graph));
        // The same kinds and shared objects give the same bytes.
        ASSERT_EQ(hex(archived(read)), hex(bytes));
    }
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
    const StreamBytes cycle("<@> ( NSArray:0 NSObject:0 ~ <i> 1 ^0 ^0 )");
    EXPECT_THAT(errorOf(cycle.data()), AllOf(HasSubstr("byte 49"), HasSubstr("holds itself")));
}

TEST(TypedStream, AnObjectThatStandsInIsWhatReferencesGet) {
    const auto read = unarchived<NSArray>(
        StreamBytes("<@> ( NSArray:0 NSObject:0 ~ <i> 2 ^0 ( QzReplaced:1 ^2 ^0 ( NSNull:0 ^2 ) ) ^0 ^3 )"));
    ASSERT_TRUE(read);
    EXPECT_THAT(read->elements(), ElementsAre(stand_in, stand_in));
}

TEST(TypedStream, AnObjectThatDecodesAsNoneLeavesTheRestReadable) {
    // The object of an unknown version holds one of an unknown class and a string that is referred to later.
    const StreamBytes stream(
        "<@> ( NSDictionary:0 NSObject:0 ~ <i> 2 ^0 ( QzReplaced:9 ^2 <{?=@[2@]!}> ( Unknown:0 ^2 <d> 5 ) "
        "( NSString:1 ^2 <+> 4 'kept' ) ~ ) ^0 ( ^8 ^9 1 'v' ) ^0 ^7 ^0 ^7 )");
    test::LogCapture log;
    EXPECT_EQ(errorOf(stream.data()), "(read) {kept = kept}");
    EXPECT_THAT(log.lines(), ElementsAre("1 of 2 entries of a dictionary decode as no object and are dropped\n"));
}

TEST(TypedStream, KindsOfNumbers) {
    const struct {
        std::string type, bytes;
        Ref<NSNumber> expected;
    } cases[] = {
        {"c", "1", NSNumber::numberWithBool(true)},
        {"c", "0xc8", NSNumber::numberWithInt(-56)},
        {"B", "0", NSNumber::numberWithBool(false)},
        {"C", "0xc8", NSNumber::numberWithInt(200)},
        {"s", "w0x8000", NSNumber::numberWithInt(-32768)},
        {"I", "l0xffffffff", NSNumber::numberWithLongLong(UINT32_MAX)},
        {"L", "5", NSNumber::numberWithInt(5)},
        {"q", "5", NSNumber::numberWithLongLong(5)},
        {"d", "3", NSNumber::numberWithDouble(3)},
    };
    const auto number = [](const std::string& type, const std::string& bytes) {
        return StreamBytes("<@> ( NSNumber:0 NSValue:0 NSObject:0 ~ <*> 0x84 <" + type + "> " + bytes + " )");
    };
    for (const auto& [type, bytes, expected] : cases) {
        const auto read = unarchived<NSNumber>(number(type, "^5 " + bytes));
        ASSERT_TRUE(read) << type;
        EXPECT_EQ(read->value(), expected->value()) << type;
    }
    const std::string greatest = "^5 0x87 255 255 255 255 255 255 255 ";
    EXPECT_EQ(unarchived<NSNumber>(number("Q", greatest + "0x7f"))->value(),
              NSNumber::numberWithLongLong(INT64_MAX)->value());
    EXPECT_THAT(errorOf(number("Q", greatest + "255").data()), HasSubstr("too large"));
    EXPECT_THAT(errorOf(number("{CGSize=dd}", "^5 1 1").data()), HasSubstr("{CGSize=dd}"));
    EXPECT_THAT(errorOf(number("i", "<d> 1").data()), HasSubstr("\"d\""));
}

TEST(TypedStream, DamagedCharactersDoNotCostTheText) {
    test::LogCapture log;
    EXPECT_EQ(errorOf(StreamBytes("<@> ( NSString:1 NSObject:0 ~ <+> 3 'a' 0xff 'b' )").data()), "(read) a\uFFFDb");
    EXPECT_EQ(errorOf(NSArchiver::archivedDataWithRootObject("\uFFFD"_ns)), "(read) \uFFFD");
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("UTF-8"))) << "U+FFFD itself is no damage";
}

// Contains an object that cannot be written, and says where.
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
    // One object more, around what is written before.
    const Ref<NSArchiver> archiver = NSArchiver::init();
    EXPECT_TRUE(archiver->encodeObject(nested));
    EXPECT_FALSE(archiver->encodeObject(NSArray::arrayWithObjects({nested})));
    EXPECT_THAT(archiver->error(), HasSubstr("more than 512 objects inside each other"));
    EXPECT_FALSE(archiver->archiverData());
}

TEST(TypedStream, ListsWhatItsReadersKnowAndWhatNot) {
    StreamBytes stream(true);
    stream.add("<@> ( Unknown:7 NSObject:0 ~ <@*> ^0 0x84").text("a\"\n").add("<[2C]> 1 0xff )");
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

    Ref<NSData> read(const std::string& name) const { return readFile(folder_ + "/" + name, nullptr); }

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
