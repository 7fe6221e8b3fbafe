#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/NSArchiver.h"
#include "platform/foundation/NSUnarchiver.h"
#include "platform/graphics/NSColor.h"
#include "platform/text/NSAttributedString.h"
#include "platform/text/NSFont.h"
#include "tests/support/CodedAs.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Ref<NSDictionary> attributes(const char* name, Ref<NSObject> value) {
    ObjectMap map;
    map.set(NSString::stringWithUTF8String(name), std::move(value));
    return NSDictionary::dictionaryWithMap(map);
}

Ref<NSMutableAttributedString> title() {
    const auto string = NSMutableAttributedString::init();
    const Ref<NSDictionary> plain = attributes("NSFont", NSFont::fontWithName(*"DejaVuSans"_ns, 20));
    string->appendString(u"Two ", plain);
    string->appendString(u"colours", attributes("NSColor", NSColor::colorWithCalibratedRed(1, 0.5f, 0, 1)));
    string->appendString(u" \U0001F600 and none", plain);
    string->appendString(u".", {});
    return string;
}

TEST(NSAttributedStringCoding, TextAndAttributesComeBackAndShareWhatTheyShared) {
    const Ref<NSMutableAttributedString> string = title();
    const Ref<NSAttributedString> strings[] = {string, string->copy(), NSAttributedString::init()};
    for (const Ref<NSAttributedString>& written : strings) {
        std::string error;
        const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(written, &error);
        ASSERT_TRUE(data) << error;
        const auto read =
            std::dynamic_pointer_cast<NSAttributedString>(NSUnarchiver::unarchiveObjectWithData(data, &error));
        ASSERT_TRUE(read) << error;
        EXPECT_TRUE(read->isEqual(*written)) << read->description();
        EXPECT_EQ(read->className(), written->className());
        EXPECT_EQ(read->attributesAtIndex(0), read->attributesAtIndex(12)) << "none, in the empty text";
        EXPECT_TRUE(NSArchiver::archivedDataWithRootObject(read)->isEqual(*data));
    }
}

TEST(NSAttributedStringCoding, WritesAnAttributesDictionaryOnceAndNumbersRunsByIt) {
    // Reads the groups as the format has them: runs 1, 2, 1, 3, and a dictionary behind each new number.
    static std::vector<int32_t> numbers;
    static std::vector<uint32_t> lengths;
    numbers.clear();
    lengths.clear();
    static const CodedClassRegistration registration(
        {.name = "NSPeeker", .decode = [](NSUnarchiver& unarchiver) -> Ref<NSObject> {
             const Ref<NSObject> text = unarchiver.decodeObject();
             while (unarchiver.typesOfNextGroup()) {
                 int32_t number = 0;
                 uint32_t length = 0;
                 if (!unarchiver.decodeValuesOfObjCTypes("iI", {&number, &length})) return {};
                 numbers.push_back(number);
                 lengths.push_back(length);
                 if (unarchiver.typesOfNextGroup() == "@") unarchiver.decodeObjectOfClass<NSDictionary>("NSDictionary");
             }
             return text;
         }});
    std::string bytes(NSArchiver::archivedDataWithRootObject(title()->copy())->view());
    bytes.replace(bytes.find("\x12NSAttributedString"), 19, "\x08NSPeeker");
    std::string error;
    EXPECT_TRUE(NSUnarchiver::unarchiveObjectWithData(NSData::dataWithBytes(std::string_view(bytes)), &error)) << error;
    EXPECT_THAT(numbers, ElementsAre(1, 2, 1, 3));
    EXPECT_THAT(lengths, ElementsAre(4, 7, 12, 1));
}

TEST(NSAttributedStringCoding, RunsThatDoNotFitTheTextAreRefused) {
    struct Case {
        const char* why;
        std::vector<std::pair<int32_t, uint32_t>> runs;
        const char* error;
    };
    const Case cases[] = {
        {"beyond the end", {{1, 6}}, "a run of length 6 at 0 of a text of length 5"},
        {"beyond the end, by wrapping", {{1, 2}, {1, UINT32_MAX}}, "a run of length 4294967295 at 2"},
        {"without length", {{1, 0}}, "a run of length 0"},
        {"a number left out", {{2, 5}}, "a run has the attributes 2"},
        {"a number below the first", {{0, 5}}, "a run has the attributes 0"},
        {"too short", {{1, 4}}, "an object ends where a value is due"},
        {"too long", {{1, 5}, {1, 1}}, "the end of an object is due"},
    };
    for (const auto& [why, runs, expected] : cases) {
        std::string error;
        const auto write = [&](NSArchiver& archiver) {
            archiver.encodeObject("title"_ns);
            int32_t known = 0;
            for (const auto& [number, length] : runs) {
                archiver.encodeValuesOfObjCTypes("iI", {number, length});
                if (number > known) archiver.encodeObject(NSDictionary::dictionary());
                known = std::max(known, number);
            }
        };
        EXPECT_FALSE(NSUnarchiver::unarchiveObjectWithData(test::codedAs("NSAttributedString", write), &error)) << why;
        EXPECT_THAT(error, HasSubstr(expected)) << why;
    }
}

}  // namespace
}  // namespace qz
