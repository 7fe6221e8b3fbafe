#include <cmath>
#include <cstdlib>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using testing::HasSubstr;
using testing::Not;

Ref<NSDictionary> dictionary(const std::vector<std::pair<const char*, Ref<NSObject>>>& entries) {
    ObjectMap map;
    for (const auto& [key, value] : entries) map.set(NSString::stringWithUTF8String(key), value);
    return NSDictionary::dictionaryWithMap(map);
}

std::string written(const Ref<NSObject>& plist, std::string* error = nullptr) {
    const Ref<NSData> data = NSPropertyListSerialization::dataFromPropertyList(plist, NSPropertyListFormat::xml, error);
    return data ? std::string(data->view()) : "(refused)";
}

Ref<NSObject> readBack(std::string_view file, std::string* error = nullptr) {
    return NSPropertyListSerialization::propertyListFromData(*NSData::dataWithBytes(file), error);
}

// The error for a refused file, checked to be one line; "(read)" if it is accepted.
std::string errorOf(std::string_view file) {
    std::string error;
    if (readBack(file, &error)) return "(read)";
    EXPECT_THAT(error, Not(HasSubstr("\n")));
    EXPECT_NE(error, "");
    return error;
}

std::string inPlist(const std::string& value) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + value + "</plist>";
}

std::string nestedArrays(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<array>";
    for (int i = 0; i < depth; ++i) text += "</array>";
    return inPlist(text);
}

std::string encoded(std::u16string_view text, bool bigEndian, bool withMark) {
    std::string bytes;
    std::u16string units = (withMark ? u"\uFEFF" : u"") + std::u16string(text);
    for (const char16_t unit : units) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

// One of everything, not in alphabetical order.
Ref<NSObject> sample() {
    std::vector<uint8_t> bytes(100);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 37);
    return dictionary({
        {"text", "  <Lower & \"Third\">\n\t中文 😀 "_ns},
        {"carriage", "a\r\nb"_ns},
        {"", NSString::string()},
        {"integer", NSNumber::numberWithInt(-7)},
        {"wide", NSNumber::numberWithLongLong(INT64_MIN)},
        {"real", NSNumber::numberWithDouble(0.1)},
        {"whole real", NSNumber::numberWithDouble(3)},
        {"large real", NSNumber::numberWithDouble(1.7976931348623157e308)},
        {"infinity", NSNumber::numberWithDouble(-std::numeric_limits<double>::infinity())},
        {"true", NSNumber::numberWithBool(true)},
        {"false", NSNumber::numberWithBool(false)},
        {"date", NSDate::dateWithTimeIntervalSinceReferenceDate(-1)},
        {"data", NSData::dataWithBytes(bytes)},
        {"short data", NSData::dataWithBytes(std::string_view("ab"))},
        {"no data", NSData::data()},
        {"array", NSArray::arrayWithObjects({NSArray::array(), NSDictionary::dictionary(), "x"_ns})},
    });
}

TEST(PropertyList, WritesThePlatformsLayoutInTheDictionarysOrder) {
    const Ref<NSObject> plist = dictionary({
        {"Version", NSNumber::numberWithInt(0)},
        {"Palette", NSArray::arrayWithObjects({dictionary({{"a<b", "&>"_ns}}), NSArray::array()})},
    });
    EXPECT_EQ(written(plist),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<dict>\n"
              "\t<key>Version</key>\n"
              "\t<integer>0</integer>\n"
              "\t<key>Palette</key>\n"
              "\t<array>\n"
              "\t\t<dict>\n"
              "\t\t\t<key>a&lt;b</key>\n"
              "\t\t\t<string>&amp;&gt;</string>\n"
              "\t\t</dict>\n"
              "\t\t<array/>\n"
              "\t</array>\n"
              "</dict>\n"
              "</plist>\n");
}

TEST(PropertyList, RoundTripKeepsValuesKindsAndOrder) {
    const std::string file = written(sample());
    const Ref<NSObject> again = readBack(file);
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->isEqual(*sample())) << file;
    EXPECT_EQ(written(again), file) << "order and kinds";
    EXPECT_EQ(std::static_pointer_cast<NSDictionary>(again)->map().entries().front().key->description(), "text");
}

TEST(PropertyList, RealsAreWrittenInTheDigitsOfTheirKind) {
    const struct {
        Ref<NSNumber> number;
        const char* element;
    } cases[] = {
        {NSNumber::numberWithFloat(0.1f), "<real>0.1</real>"},
        {NSNumber::numberWithDouble(double{0.1f}), "<real>0.10000000149011612</real>"},
        {NSNumber::numberWithFloat(72), "<real>72</real>"},
        {NSNumber::numberWithDouble(-0.0), "<real>-0</real>"},
        {NSNumber::numberWithFloat(std::numeric_limits<float>::infinity()), "<real>+infinity</real>"},
        {NSNumber::numberWithDouble(-std::numeric_limits<double>::infinity()), "<real>-infinity</real>"},
        {NSNumber::numberWithDouble(std::numeric_limits<double>::quiet_NaN()), "<real>nan</real>"},
    };
    for (const auto& [number, element] : cases) {
        const std::string file = written(number);
        EXPECT_THAT(file, HasSubstr(element));
        const auto again = std::dynamic_pointer_cast<NSNumber>(readBack(file));
        ASSERT_TRUE(again && again->isReal()) << element;
        if (std::holds_alternative<float>(number->value()) || std::isnan(number->doubleValue())) {
            EXPECT_EQ(written(NSNumber::numberWithFloat(again->floatValue())), file);
        } else {
            EXPECT_TRUE(again->isEqual(*number));
            EXPECT_EQ(std::signbit(again->doubleValue()), std::signbit(number->doubleValue()));
        }
    }
}

TEST(PropertyList, ReadsTheFormsThatFilesHave) {
    const Ref<NSObject> x = NSArray::arrayWithObjects({"x"_ns});
    const struct {
        std::string file;
        Ref<NSObject> value;
        const char* reason;
    } cases[] = {
        {inPlist("<array><string>x</string></array>"), x, "an array at the top"},
        {"<array><string>x</string></array>", x, "neither prologue nor plist"},
        {"\xEF\xBB\xBF" + inPlist("<array><string>x</string></array>"), x, "a byte-order mark"},
        {inPlist("<string/>"), NSString::string(), "an empty element"},
        {inPlist("<string>&lt;&amp;&gt;&quot;&apos;&#65;&#x1F600;</string>"), "<&>\"'A😀"_ns, "the five entities"},
        {inPlist("<integer> +12\n</integer>"), NSNumber::numberWithInt(12), "a sign and white space"},
        {inPlist("<integer>-0x8000000000000000</integer>"), NSNumber::numberWithLongLong(INT64_MIN), "hexadecimal"},
        {inPlist("<integer>2147483648</integer>"), NSNumber::numberWithLongLong(2147483648), "beyond 32 bits"},
        {inPlist("<real>1e+05</real>"), NSNumber::numberWithDouble(100000), "an exponent"},
        {inPlist("<real>Infinity</real>"), NSNumber::numberWithDouble(INFINITY), "infinity in other words"},
        {inPlist("<data>\n\tYW\n\tI=\n</data>"), NSData::dataWithBytes(std::string_view("ab")),
         "white space in base64"},
        {inPlist("<date>2004-02-29T12:00:01Z</date>"), NSDate::dateWithTimeIntervalSinceReferenceDate(99748801),
         "a leap day"},
        {inPlist("<dict><key>a</key><true/><key>a</key><false/></dict>"),
         dictionary({{"a", NSNumber::numberWithBool(false)}}), "a key twice: the later value"},
        {encoded(u"<plist><string>é😀</string></plist>", true, true), "é😀"_ns, "UTF-16, big-endian"},
        {encoded(u"<plist><string>é😀</string></plist>", false, true), "é😀"_ns, "UTF-16, little-endian"},
        {encoded(u"<plist><string>é</string></plist>", true, false), "é"_ns, "UTF-16 without a mark, big-endian"},
        {encoded(u"<plist><string>é</string></plist>", false, false), "é"_ns, "UTF-16 without a mark"},
        {"<?xml version=\"1.0\" encoding=\"windows-1252\"?><plist><string>\x80</string></plist>", "€"_ns, "Windows"},
        {"<?xml version=\"1.0\" encoding=\"macintosh\"?><plist><string>\x8E</string></plist>", "é"_ns, "Mac"},
    };
    for (const auto& [file, value, reason] : cases) {
        std::string error;
        const Ref<NSObject> found = readBack(file, &error);
        ASSERT_TRUE(found) << reason << ": " << error;
        EXPECT_TRUE(found->isEqual(*value)) << reason << ": " << found->description();
        EXPECT_EQ(written(found), written(value)) << reason;
    }
}

TEST(PropertyList, RefusesAndSaysWhatAndWhere) {
    const struct {
        std::string file;
        const char* error;
    } cases[] = {
        {"", "the file is empty"},
        {"bplist00\xD1\x01\x02", "binary form; convert it with: plistutil -f xml -i FILE -o FILE.plist"},
        {"// old\n{ a = b; }", "old text form; convert it with: plistutil"},
        {std::string("\xFF\xFE\0\0<\0\0\0", 8), "UTF-32; save it as UTF-8"},
        {"palette", "line 1, column 1: this is not well-formed XML"},
        {"<html><body/></html>", "line 1, column 1: the element \"html\" does not belong in a property list"},
        {inPlist(""), "holds no value"},
        {inPlist("<true/>\n<false/>"), "line 3, column 1: a second value"},
        {inPlist("<dict><string>x</string></dict>"), "a value without a key"},
        {inPlist("<dict><key>a</key></dict>"), "a key without a value"},
        {inPlist("<array><key>a</key></array>"), "a key outside a dictionary"},
        {inPlist("<array>x</array>"), "the text \"x\" stands outside the values"},
        {inPlist("<string>a<b/></string>"), "the element \"b\" stands inside \"string\""},
        {inPlist("<array><plist/></array>"), "\"plist\" stands inside the property list"},
        {inPlist("\n<array>\n  <integer>1.5</integer>\n</array>"), "line 4, column 3: integer: \"1.5\" is not a whole"},
        {inPlist("<integer>9223372036854775808</integer>"), "does not fit in a signed 64-bit integer"},
        {inPlist("<real>1,5\n2</real>"), "real: \"1,5 2\" is not a number"},
        {inPlist("<real>1e999</real>"), "outside the range"},
        {inPlist("<true>no</true>"), "stands inside \"true\""},
        {inPlist("<date>2004-02-30T00:00:00Z</date>"), "not a date of the calendar"},
        {inPlist("<date>2004-02-28T00:00:00.5Z</date>"), "not a date of the form"},
        {inPlist("<date>2004-02-2xT00:00:00Z</date>"), "not a date of the form"},
        {inPlist("<data>YWI</data>"), "wrong padding"},
        {inPlist("<data>YQ==YQ==</data>"), "follow the padding"},
        {inPlist("<data>YW-=</data>"), "\"-\" is not a base64 digit"},
        {"<!DOCTYPE plist SYSTEM \"http://localhost/x.dtd\"><plist><string>&who;</string></plist>",
         "the entity \"who\" is not known"},
        {"<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;&a;\">]><plist><string>&b;</string></plist>",
         "the entity \"a\" is declared"},
        {"<!DOCTYPE plist [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><plist><string>&x;</string></plist>",
         "the entity \"x\" is declared"},
        {"<!DOCTYPE plist [<!ENTITY % p SYSTEM \"file:///dev/zero\"> %p;]><plist><true/></plist>", "is declared"},
        {"<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><plist><true/></plist>", "unknown encoding"},
        {inPlist("<" + std::string(100, 'e') + "/>"), "…\" does not belong in a property list"},
    };
    for (const auto& [file, error] : cases) EXPECT_THAT(errorOf(file), HasSubstr(error)) << file;
}

TEST(PropertyList, DepthIsBoundedBothWays) {
    constexpr int depthMax = NSPropertyListSerialization::kDepthMax;
    EXPECT_THAT(errorOf(nestedArrays(1'000'000)), HasSubstr("more than 512 levels"));
    EXPECT_THAT(errorOf(nestedArrays(depthMax + 1)), HasSubstr("more than 512 levels"));
    const Ref<NSObject> deepest = readBack(nestedArrays(depthMax));
    ASSERT_TRUE(deepest && readBack(written(deepest)));
    std::string error;
    EXPECT_EQ(written(NSArray::arrayWithObjects({deepest}), &error), "(refused)");
    EXPECT_THAT(error, testing::StartsWith("0 > 0")) << "the outermost steps, which tell most of a palette";
    EXPECT_THAT(error, testing::EndsWith("… > 0 > 0 > 0 > 0 > 0 > 0 > 0 > 0 > 0 > 0: more than 512 levels of nesting"));
}

TEST(PropertyList, WriterNamesTheCulpritAndTheWayToIt) {
    ObjectMap numbered;
    numbered.set(NSNumber::numberWithInt(5), "x"_ns);
    const auto lone = NSString::stringWithCharacters({u'a', 0xD800});
    const struct {
        Ref<NSObject> plist;
        const char* error;
    } cases[] = {
        {dictionary({{"Palette", NSArray::arrayWithObjects({"x"_ns, dictionary({{"Two\nLines", NSSet::set()}})})}}),
         "\"Palette\" > 1 > \"Two Lines\": an object of class NSSet has no property-list form"},
        {NSArray::arrayWithObjects({NSDictionary::dictionaryWithMap(numbered)}),
         "0: the key 5 is of class NSNumber, not a string"},
        {NSArray::arrayWithObjects({nullptr}), "0: a null object"},
        {nullptr, "top level: a null object"},
        {NSArray::arrayWithObjects({"a\x01"_ns}), "0: the string has the character U+0001 at index 1"},
        {NSArray::arrayWithObjects({lone}), "0: the string has the character U+D800 at index 1"},
        {dictionary({{"\xEF\xBF\xBF", "x"_ns}}), "the key has the character U+FFFF at index 0"},
        {NSDate::dateWithTimeIntervalSinceReferenceDate(252423993600), "outside the years 0 to 9999"},
        {NSDate::dateWithTimeIntervalSinceReferenceDate(NAN), "outside the years 0 to 9999"},
    };
    for (const auto& [plist, expected] : cases) {
        std::string error;
        EXPECT_EQ(written(plist, &error), "(refused)");
        EXPECT_THAT(error, HasSubstr(expected));
        EXPECT_THAT(error, Not(HasSubstr("\n")));
    }
}

// Other programs read what we write, and we read what they write.
class PropertyListReferees : public testing::Test {
protected:
    void run(const std::string& command) {
        ASSERT_EQ(std::system(("cd " + folder_.path().string() + " && " + command).c_str()), 0) << command;
    }
    // plistutil reports failure by writing nothing.
    void convert(const std::string& form, const std::string& from, const std::string& to) {
        run("plistutil -f " + form + " -i " + from + " -o " + to);
        ASSERT_GT(readText(folder_.file(to)).size(), 20u) << to;
    }
    void script(const std::string& python) {
        ASSERT_TRUE(writeText(folder_.file("script.py"), "import plistlib, datetime\n" + python));
        run("python3 script.py");
    }

    const TemporaryFolder folder_;
    // The sample as Python sees it.
    const std::string sample_ = R"(sample = {
    'text': '  <Lower & "Third">\n\t中文 😀 ', 'carriage': 'a\r\nb', '': '', 'integer': -7, 'wide': -2**63, 'real': 0.1,
    'whole real': 3.0, 'large real': 1.7976931348623157e308, 'infinity': float('-inf'), 'true': True, 'false': False,
    'date': datetime.datetime(2000, 12, 31, 23, 59, 59), 'data': bytes(i * 37 & 255 for i in range(100)),
    'short data': b'ab', 'no data': b'', 'array': [[], {}, 'x']}
def check(path):
    with open(path, 'rb') as file: found = plistlib.load(file)
    assert found == sample, found
    for key in sample: assert type(found[key]) is type(sample[key]), key
    return found
)";
};

TEST_F(PropertyListReferees, ReadWhatWeWrite) {
    ASSERT_TRUE(writeText(folder_.file("ours.plist"), written(sample())));
    script(sample_ + "assert list(check('ours.plist')) == list(sample)");
    convert("bin", "ours.plist", "ours.bin");
    script(sample_ + "check('ours.bin')");
}

TEST_F(PropertyListReferees, AreReadByUs) {
    script(sample_ + R"(
with open('theirs.plist', 'wb') as file: plistlib.dump(sample, file, sort_keys=False)
with open('theirs.bin', 'wb') as file: plistlib.dump(sample, file, fmt=plistlib.FMT_BINARY)
text = open('theirs.plist', encoding='utf-8').read()
assert 'UTF-8' in text
open('utf16.plist', 'w', encoding='utf-16').write(text.replace('UTF-8', 'UTF-16'))
text = text.replace('中文 😀', 'é').replace('UTF-8', 'ISO-8859-1')
open('latin.plist', 'w', encoding='iso-8859-1').write(text)
)");
    convert("xml", "theirs.bin", "theirs-too.plist");
    // Both referees leave the carriage return bare, so that XML turns it into the line feed.
    ObjectMap expected = std::static_pointer_cast<NSDictionary>(sample())->map();
    expected.set("carriage"_ns, "a\nb"_ns);
    for (const char* name : {"theirs.plist", "utf16.plist", "theirs-too.plist", "latin.plist"}) {
        if (std::string_view(name) == "latin.plist") expected.set("text"_ns, "  <Lower & \"Third\">\n\té "_ns);
        std::string error;
        const Ref<NSObject> found = readBack(readText(folder_.file(name)), &error);
        ASSERT_TRUE(found) << name << ": " << error;
        EXPECT_TRUE(found->isEqual(*NSDictionary::dictionaryWithMap(expected))) << name << found->description();
    }
}

}  // namespace
}  // namespace qz
