#include <cmath>
#include <map>
#include <random>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::array kNames = {"a"_ns, "b"_ns, "c"_ns};

Ref<NSDictionary> dictionary(const std::map<int, int>& values) {
    ObjectMap map;
    for (const auto& [name, value] : values) map.set(kNames[static_cast<size_t>(name)], NSNumber::numberWithInt(value));
    return NSDictionary::dictionaryWithMap(std::move(map));
}

/// Every character with its own attributes: a slow model of an attributed string.
struct Model {
    struct Character {
        char16_t unit;
        std::map<int, int> values;
    };
    std::vector<Character> characters;

    void checkAgainst(const NSAttributedString& string, std::mt19937& random) const {
        ASSERT_EQ(string.length(), characters.size());
        for (uint32_t i = 0; i < characters.size(); ++i) {
            ASSERT_EQ(string.characters()[i], characters[i].unit);
            Range run;
            const Ref<NSDictionary> attributes = string.attributesAtIndex(i, &run);
            ASSERT_TRUE(attributes->isEqual(*dictionary(characters[i].values))) << attributes->description();
            ASSERT_TRUE(run.contains(i));
            ASSERT_LE(run.end(), characters.size());
        }
        if (characters.empty()) return;
        const auto index = static_cast<uint32_t>(random() % characters.size());
        const auto from = static_cast<uint32_t>(random() % (index + 1));
        const Range within = {from, static_cast<uint32_t>(index - from + 1 + random() % 20)};
        checkLongestRange(string, index, within);
    }

    void checkLongestRange(const NSAttributedString& string, uint32_t index, Range within) const {
        const auto longest = [&](const auto& valuesAt) {
            uint32_t start = index, end = index + 1;
            while (start > within.location && valuesAt(start - 1) == valuesAt(index)) --start;
            while (end < within.end() && end < characters.size() && valuesAt(end) == valuesAt(index)) ++end;
            return Range{start, end - start};
        };
        Range range;
        string.attributesAtIndex(index, &range, within);
        EXPECT_EQ(range, longest([&](uint32_t i) { return characters[i].values; }));
        string.attribute(*kNames[0], index, &range, within);
        EXPECT_EQ(range, longest([&](uint32_t i) {
                      const auto found = characters[i].values.find(0);
                      return found == characters[i].values.end() ? -1 : found->second;
                  }));
    }
};

class RandomEdits {
public:
    explicit RandomEdits(uint32_t seed) : random_(seed) {}

    void editOnce() {
        const auto length = static_cast<uint32_t>(model_.characters.size());
        const auto location = static_cast<uint32_t>(random_() % (length + 1));
        const Range range = {location, static_cast<uint32_t>(random_() % (std::min(length - location, 8u) + 1))};
        const auto begin = model_.characters.begin() + location;
        const int name = static_cast<int>(random_() % kNames.size());
        const int value = static_cast<int>(random_() % 2);
        switch (random_() % 6) {
            case 0:
                string_->addAttribute(kNames[static_cast<size_t>(name)], NSNumber::numberWithInt(value), range);
                for (uint32_t i = 0; i < range.length; ++i) begin[i].values[name] = value;
                break;
            case 1:
                string_->removeAttribute(*kNames[static_cast<size_t>(name)], range);
                for (uint32_t i = 0; i < range.length; ++i) begin[i].values.erase(name);
                break;
            case 2:
                string_->setAttributes(dictionary({{name, value}}), range);
                for (uint32_t i = 0; i < range.length; ++i) begin[i].values = {{name, value}};
                break;
            case 3:
                string_->deleteCharactersInRange(range);
                model_.characters.erase(begin, begin + range.length);
                break;
            case 4:
                replacePlain(range);
                break;
            default:
                replaceAttributed(range, name, value);
        }
    }
    void check() { model_.checkAgainst(*string_, random_); }

private:
    void replacePlain(Range range) {
        std::map<int, int> values;
        const uint32_t source = range.length > 0 || range.location == 0 ? range.location : range.location - 1;
        if (source < model_.characters.size()) values = model_.characters[source].values;
        string_->replaceCharactersInRange(range, "xyz"_ns);
        replaceInModel(range, {{u'x', values}, {u'y', values}, {u'z', values}});
    }
    void replaceAttributed(Range range, int name, int value) {
        const auto inserted = NSMutableAttributedString::init();
        inserted->appendString(u"p", dictionary({{name, value}}));
        inserted->appendString(u"qr", dictionary({}));
        string_->replaceCharactersInRange(range, *inserted);
        replaceInModel(range, {{u'p', {{name, value}}}, {u'q', {}}, {u'r', {}}});
    }
    void replaceInModel(Range range, const std::vector<Model::Character>& by) {
        const auto at = model_.characters.begin() + range.location;
        model_.characters.insert(model_.characters.erase(at, at + range.length), by.begin(), by.end());
    }

    std::mt19937 random_;
    Ref<NSMutableAttributedString> string_ = NSMutableAttributedString::init();
    Model model_;
};

TEST(AttributedString, agreesWithAModelThatKnowsEveryCharacter) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        RandomEdits edits(seed);
        for (int i = 0; i < 120; ++i) {
            edits.editOnce();
            edits.check();
            if (HasFatalFailure() || HasNonfatalFailure()) return;
        }
    }
}

TEST(AttributedString, refusesWhatReachesBeyondTheTextAndChangesNothing) {
    const auto string = NSMutableAttributedString::init();
    string->appendString(u"abc", dictionary({{0, 1}}));
    const Ref<NSAttributedString> before = string->copy();
    EXPECT_FALSE(string->addAttribute("a"_ns, "v"_ns, {2, 2}));
    EXPECT_FALSE(string->addAttribute("a"_ns, "v"_ns, {1, UINT32_MAX}));
    EXPECT_FALSE(string->deleteCharactersInRange({4, 0}));
    EXPECT_FALSE(string->replaceCharactersInRange({3, 1}, "x"_ns));
    EXPECT_TRUE(string->isEqual(*before));

    Range untouched = {7, 7};
    EXPECT_FALSE(string->attributesAtIndex(3, &untouched));
    EXPECT_FALSE(string->attribute(*"a"_ns, 0, &untouched, {1, 2}));
    EXPECT_FALSE(string->attributedSubstringFromRange({2, 2}));
    EXPECT_EQ(untouched, (Range{7, 7}));
}

TEST(AttributedString, partsOfItselfMayBePutIntoIt) {
    const auto string = NSMutableAttributedString::init();
    string->appendString(u"ab", dictionary({{0, 1}}));
    string->appendString(u"cd", dictionary({{0, 2}}));
    string->appendAttributedString(*string);
    string->replaceCharactersInRange({1, 6}, *string->attributedSubstringFromRange({2, 3}));
    EXPECT_EQ(string->string()->utf8(), "acdad");
    EXPECT_TRUE(string->attributesAtIndex(3)->isEqual(*dictionary({{0, 1}})));
    EXPECT_TRUE(string->attributesAtIndex(4)->isEqual(*dictionary({{0, 2}})));
}

TEST(AttributedString, runsThatShareADictionaryKeepSharingAfterAChange) {
    const Ref<NSDictionary> a = dictionary({{0, 1}}), b = dictionary({{0, 2}});
    const auto string = NSMutableAttributedString::init();
    for (int i = 0; i < 1000; ++i) string->appendString(u"x", i % 2 ? a : b);
    int asked = 0;
    string->changeAttributes({0, 1000}, [&](const Ref<NSDictionary>& old) {
        ++asked;
        return NSDictionary::dictionaryWithMap(old->map());
    });
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(string->attributesAtIndex(1), string->attributesAtIndex(999));
}

TEST(AttributedString, aFontThatIsAddedIsNoSubstituteForAnother) {
    const Ref<NSFont> sans = NSFont::systemFontOfSize(10), larger = NSFont::systemFontOfSize(20);
    const auto string = NSMutableAttributedString::init();
    ObjectMap substituted;
    substituted.set(NSFontAttributeName, sans);
    substituted.set(NSOriginalFontAttributeName, larger);
    string->appendString(u"ab", NSDictionary::dictionaryWithMap(substituted));
    string->addAttribute(NSFontAttributeName, larger, {0, 1});
    EXPECT_FALSE(string->attributesAtIndex(0)->objectForKey(*NSOriginalFontAttributeName));
    EXPECT_TRUE(string->attributesAtIndex(1)->objectForKey(*NSOriginalFontAttributeName));
}

Ref<NSFont> decodedFont(std::string_view block, float size, std::string* error = nullptr) {
    const auto groups = [&](NSArchiver& archiver) {
        archiver.encodeInt(static_cast<int32_t>(block.size()));
        archiver.encodeValueOfObjCType("[" + std::to_string(block.size()) + "c]", block);
        archiver.encodeFloat(size);
        for (const int32_t unknown : {0, 1, 0, 14}) archiver.encodeValueOfObjCType("c", unknown);
    };
    return std::dynamic_pointer_cast<NSFont>(
        NSUnarchiver::unarchiveObjectWithData(test::codedAs("NSFont", groups), error));
}

TEST(NSFontCoding, IsReadBackAsTheSameFont) {
    const Ref<NSFont> font = NSFont::fontWithName(*"DejaVuSans-Bold"_ns, 40.5f);
    ASSERT_TRUE(font);
    const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(font);
    // The name's block: kind 6, 32 bytes of UTF-16 with its mark, no padding.
    const std::string block(
        "\x06\0\0\0\x20\0\0\0\xff\xfe"
        "D\0e\0j\0a\0V\0u\0",
        22);
    EXPECT_THAT(std::string(data->view()), HasSubstr("[40c]" + block));
    const Ref<NSObject> read = NSUnarchiver::unarchiveObjectWithData(data);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEqual(*font)) << read->description();
}

TEST(NSFontCoding, NamesOfEitherByteOrderAndWithPadding) {
    for (const std::string& block : {std::string("\6\0\0\0\x16\0\0\0\xff\xfe"
                                                 "D\0e\0j\0a\0V\0u\0S\0a\0n\0s\0\0\0",
                                                 32),
                                     std::string("\6\0\0\0\x16\0\0\0\xfe\xff\0D\0e\0j\0a\0V\0u\0S\0a\0n\0s\0\0", 32)}) {
        std::string error;
        const Ref<NSFont> font = decodedFont(block, 12, &error);
        ASSERT_TRUE(font) << error;
        EXPECT_EQ(font->fontName()->utf8(), "DejaVuSans");
        EXPECT_EQ(font->pointSize(), 12);
    }
}

TEST(NSFontCoding, AFontThatIsNotInstalledBecomesTheTitleBarFontAndIsLogged) {
    test::LogCapture log;
    const std::string block("\6\0\0\0\x06\0\0\0\xff\xfeZ\0q\0\0\0", 16);
    const Ref<NSFont> font = decodedFont(block, 31);
    ASSERT_TRUE(font);
    EXPECT_TRUE(font->isEqual(*NSFont::titleBarFontOfSize(31)));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("\"Zq\" at 31 points")));
    // A size that no font can have.
    EXPECT_TRUE(decodedFont(std::string("\6\0\0\0\x16\0\0\0\xff\xfe"
                                        "D\0e\0j\0a\0V\0u\0S\0a\0n\0s\0\0\0",
                                        32),
                            INFINITY));
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST(NSFontCoding, DamagedNamesAreRefused) {
    for (const std::string& block :
         {std::string(), std::string("\6\0\0\0", 4), std::string("\7\0\0\0\2\0\0\0\xff\xfe", 10),
          std::string("\6\0\0\0\4\0\0\0\xff\xfe", 10), std::string("\6\0\0\0\2\0\0\0\xff\xfe", 10),
          std::string("\6\0\0\0\3\0\0\0\xff\xfe"
                      "a\0",
                      12),
          std::string("\6\0\0\0\xff\xff\xff\xff\xff\xfe", 10)}) {
        std::string error;
        EXPECT_FALSE(decodedFont(block, 12, &error)) << block.size();
        EXPECT_THAT(error, HasSubstr("the name of a font"));
    }
}

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
        EXPECT_EQ(read->attributesAtIndex(0), read->attributesAtIndex(12)) << "both null in the empty text";
        EXPECT_TRUE(NSArchiver::archivedDataWithRootObject(read)->isEqual(*data));
    }
}

TEST(NSAttributedStringCoding, WritesAnAttributesDictionaryOnceAndNumbersRunsByIt) {
    // Reads the format's groups: runs 1, 2, 1, 3, and a dictionary after each new number.
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
        {"too short", {{1, 4}}, "an object ends where a value is expected"},
        {"too long", {{1, 5}, {1, 1}}, "the end of an object is expected"},
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
