#include <map>
#include <random>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

const std::array kNames = {"a"_ns, "b"_ns, "c"_ns};

Ref<NSDictionary> dictionary(const std::map<int, int>& values) {
    ObjectMap map;
    for (const auto& [name, value] : values) map.set(kNames[static_cast<size_t>(name)], NSNumber::numberWithInt(value));
    return NSDictionary::dictionaryWithMap(std::move(map));
}

/// Every character with attributes of its own: the slow way to say what an attributed string is.
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

}  // namespace
}  // namespace qz
