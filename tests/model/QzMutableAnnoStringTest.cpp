#include <algorithm>
#include <functional>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoAttributeName.h"
#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "platform/foundation/NSArray.h"
#include "platform/text/NSAttributedString.h"

namespace qz {
namespace {

const Ref<QzAnnoKey> A = QzAnnoKey::keyWithName("A"_ns);
const Ref<QzAnnoKey> B = QzAnnoKey::keyWithName("B"_ns);

/// The characters at which the key holds as '1', the others as '0'.
std::string mask(const QzAnnoString& string, const Ref<QzAnnoKey>& key) {
    std::string mask;
    for (uint32_t i = 0; i < string.length(); ++i) mask += string.annotation(*key, i) ? '1' : '0';
    return mask;
}

Ref<QzMutableAnnoString> annotated(const Ref<NSString>& text, const Ref<QzAnnoKey>& key, const std::string& mask) {
    const auto string = QzMutableAnnoString::initWithString(text);
    string->removeAnno(key, {0, 0});
    for (uint32_t i = 0; i < mask.size(); ++i) {
        if (mask[i] == '1') string->addAnno(key, {i, 1});
    }
    return string;
}

TEST(QzMutableAnnoString, ReplacedTextCarriesAnnotationsAlong) {
    const struct {
        const char* reason;
        const char* before;  // where the key holds in abcdef
        Range range;
        Ref<NSString> with;
        const char* text;  // none: refused
        const char* after;
    } cases[] = {
        {"an insertion takes the state before it", "001100", {3, 0}, "XY"_ns, "abcXYdef", "00111100"},
        {"nothing is before the start", "111111", {0, 0}, "XY"_ns, "XYabcdef", "00111111"},
        {"a shorter text keeps the first annotations", "010010", {1, 3}, "Z"_ns, "aZef", "0110"},
        {"a longer text repeats the last replaced one", "010000", {1, 1}, "XYZ"_ns, "aXYZcdef", "01110000"},
        {"a deletion shifts", "001100", {0, 2}, ""_ns, "cdef", "1100"},
        {"past the end", "010000", {5, 2}, "X"_ns, nullptr, "010000"},
        {"an end that wraps", "010000", {2, 0xFFFFFFFF}, ""_ns, nullptr, "010000"},
        {"no text", "010000", {0, 1}, {}, nullptr, "010000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const auto string = annotated("abcdef"_ns, A, c.before);
        EXPECT_EQ(string->replaceCharactersInRange(c.range, c.with), c.text != nullptr);
        EXPECT_EQ(string->string()->utf8(), c.text ? c.text : "abcdef");
        EXPECT_EQ(mask(*string, A), c.after);
    }
}

TEST(QzMutableAnnoString, TakesInAnnotatedTextItsOwnIncluded) {
    const auto other = annotated("XY"_ns, B, "11");
    const auto string = annotated("abcdef"_ns, A, "010000");
    EXPECT_FALSE(string->insertAnnoString(*other, 7));
    EXPECT_FALSE(string->replaceCharactersInRange({7, 0}, *other));
    EXPECT_EQ(string->allKeys()->count(), 1u) << "a refusal changes nothing";
    EXPECT_TRUE(string->insertAnnoString(*string, 2));
    EXPECT_EQ(string->string()->utf8(), "ababcdefcdef");
    EXPECT_EQ(mask(*string, A), "010100000000");
    EXPECT_TRUE(string->replaceCharactersInRange({3, 9}, *string));
    EXPECT_EQ(string->string()->utf8(), "abaababcdefcdef");
    EXPECT_EQ(mask(*string, A), "010010100000000");
    EXPECT_TRUE(string->replaceCharactersInRange({2, 13}, *other));
    string->appendAnnoString(*string);
    EXPECT_EQ(string->string()->utf8(), "abXYabXY");
    EXPECT_EQ(mask(*string, A), "01110111") << "a key of the receiver alone goes on over inserted text";
    EXPECT_EQ(mask(*string, B), "00110011");
}

TEST(QzMutableAnnoString, AppendedTextShowsTheTailOfOtherKeys) {
    const auto plain = QzAnnoString::initWithString("xyz"_ns);
    const auto clearTail = annotated("abcde"_ns, A, "11111");
    clearTail->appendAnnoString(*plain);
    EXPECT_EQ(mask(*clearTail, A), "11111000");
    EXPECT_EQ(clearTail->frame()->count(), 0u);

    const auto setTail = annotated("abcde"_ns, A, "0000001");
    setTail->appendAnnoString(*plain);
    EXPECT_EQ(mask(*setTail, A), "00000010");

    // A substring's bit set ends with its text, so growth repeats its last state.
    const auto grown = annotated("abcde"_ns, A, "00011")->annoSubstringFromRange({2, 3})->mutableCopy();
    grown->appendAnnoString(*annotated("xyz"_ns, B, "010"));
    EXPECT_EQ(mask(*grown, A), "011111");
    EXPECT_EQ(mask(*grown, B), "000010");
}

TEST(QzMutableAnnoString, FrameTogglesSetFirstUnlessEverywhere) {
    const auto string = annotated("abcde"_ns, A, "011");
    string->toggleFrameAnno(A);
    EXPECT_EQ(mask(*string, A), "11111");
    string->toggleFrameAnno(A);
    EXPECT_EQ(mask(*string, A), "00000");
    string->toggleFrameAnno(B);
    EXPECT_TRUE(string->frame()->containsObject(*B));
    string->removeFrameAnno(B);
    EXPECT_TRUE(string->allKeys()->containsObject(*B));
}

TEST(QzMutableAnnoString, NamingNoKeyOrAnUnholdableRangeSetsNothing) {
    const auto string = annotated("abc"_ns, A, "010");
    string->addAnno({}, {0, 3});
    string->toggleFrameAnno({});
    string->setAnnos({}, {0, 3});
    EXPECT_EQ(string->allKeys()->count(), 1u);
    string->addAnno(A, {0, 0xFFFFFFFF});
    string->setAnnos(NSSet::setWithObjects<NSObject>({"no key"_ns, B}), {0, 2});
    EXPECT_EQ(mask(*string, A), "010");
    EXPECT_EQ(mask(*string, B), "110");
}

TEST(QzMutableAnnoString, TakesOverAnotherStringWithoutSharing) {
    const auto source = annotated("abc"_ns, A, "010");
    const auto string = annotated("longer text"_ns, B, "11111111111");
    string->setAnnoString(*source);
    EXPECT_TRUE(string->isEqual(*source));
    string->addFrameAnno(A);
    EXPECT_EQ(mask(*source, A), "010");
    string->setAnnoString(*string);
    EXPECT_EQ(mask(*string, A), "111");
}

TEST(QzMutableAnnoString, ReadsKeysFromAnAttributedString) {
    const auto keyed = [](const Ref<NSObject>& keys) {
        ObjectMap map;
        map.set(QzAnnoAttributeName, keys);
        return NSDictionary::dictionaryWithMap(std::move(map));
    };
    const auto text = NSMutableAttributedString::init();
    text->appendString(u"abc", keyed(NSSet::setWithObject(A)));
    text->appendString(u"def", keyed(NSArray::arrayWithObjects({A, B, "no key"_ns})));
    text->appendString(u"gh", {});
    text->appendString(u"i", keyed("no collection"_ns));
    const auto string = QzMutableAnnoString::initWithKeyedAttributedString(*text);
    EXPECT_EQ(string->string()->utf8(), "abcdefghi");
    EXPECT_EQ(mask(*string, A), "111111000");
    EXPECT_EQ(mask(*string, B), "000111000");
    EXPECT_EQ(string->allKeys()->count(), 2u);
    EXPECT_EQ(QzMutableAnnoString::initWithKeyedAttributedString(*NSAttributedString::init())->length(), 0u);
}

/// A string as one set of keys a character, and the annotated string under the same edits.
class CharacterModel {
public:
    using Keys = std::set<Ref<QzAnnoKey>>;

    CharacterModel(uint32_t seed, uint32_t length)
        : random_(seed), string_(QzMutableAnnoString::initWithString(textOf(length))), characters_(length) {
        for (const char* name : {"K", "L", "M", "N"}) {
            keys_.push_back(QzAnnoKey::keyWithName(NSString::stringWithUTF8String(name)));
        }
    }

    void edit() {
        const uint32_t count = static_cast<uint32_t>(characters_.size());
        const uint32_t location = upTo(count);
        const Range range{location, upTo(upTo(4) == 0 ? count - location : std::min(count - location, 9u))};
        const Ref<QzAnnoKey>& key = keys_[upTo(3)];
        const uint32_t newLength = upTo(6);
        const std::function<void()> operations[] = {
            [&] { string_->addAnno(key, range), each(range, [&](Keys& k) { k.insert(key); }); },
            [&] { string_->removeAnno(key, range), each(range, [&](Keys& k) { k.erase(key); }); },
            [&] {
                string_->toggleAnno(key, range), each(range, [&](Keys& k) { k.erase(key) || k.insert(key).second; });
            },
            [&] { string_->toggleFrameAnno(key), toggleEverywhere(key); },
            [&] { string_->replaceCharactersInRange(range, textOf(newLength)), replace(range, newLength); },
            [&] { string_->deleteCharactersInRange(range), replace(range, 0); },
            [&] { insert(location, newLength); },
            [&] { append(newLength); },
        };
        operations[upTo(std::size(operations) - 1)]();
    }

    void check() {
        ASSERT_EQ(string_->length(), characters_.size());
        // A string built anew has other bit set sizes, and must be equal all the same.
        const auto rebuilt = QzMutableAnnoString::initWithString(string_->string());
        for (const auto& key : string_->allKeys()->objects<QzAnnoKey>()) rebuilt->removeAnno(key, {0, 0});
        Keys frame(keys_.begin(), keys_.end());
        for (uint32_t i = 0; i < characters_.size(); ++i) {
            for (const auto& key : characters_[i]) rebuilt->addAnno(key, {i, 1});
            std::erase_if(frame, [&](const auto& key) { return !characters_[i].contains(key); });
        }
        ASSERT_TRUE(string_->isEqual(*rebuilt));
        ASSERT_EQ(asKeys(string_->frame()), characters_.empty() ? Keys() : frame);
        checkRuns();
    }

private:
    uint32_t upTo(uint32_t last) { return static_cast<uint32_t>(random_() % (last + 1)); }
    static Ref<NSString> textOf(uint32_t length) {
        return NSString::stringWithCharacters(std::u16string(length, u'x'));
    }
    static Keys asKeys(const Ref<NSSet>& set) {
        const auto keys = set->objects<QzAnnoKey>();
        return {keys.begin(), keys.end()};
    }

    void each(Range range, const std::function<void(Keys&)>& change) {
        for (uint64_t i = range.location; i < range.end(); ++i) change(characters_[i]);
    }

    void replace(Range range, uint32_t newLength) {
        std::vector<Keys> fresh;
        for (uint32_t i = 0; i < newLength; ++i) {
            const uint32_t source = range.location + std::min(i, range.length);  // one past the one whose keys go on
            if (i < range.length)
                fresh.push_back(characters_[source]);
            else
                fresh.push_back(source > 0 ? characters_[source - 1] : Keys());
        }
        const auto first = characters_.begin() + range.location;
        characters_.insert(characters_.erase(first, first + range.length), fresh.begin(), fresh.end());
    }

    /// A short annotated string that uses the keys, at random, and its sets.
    std::pair<Ref<QzMutableAnnoString>, std::vector<Keys>> other(uint32_t length,
                                                                 const std::vector<Ref<QzAnnoKey>>& keys) {
        const auto string = QzMutableAnnoString::initWithString(textOf(length));
        std::vector<Keys> sets(length);
        for (const auto& key : keys) {
            const uint32_t end = upTo(length);
            string->addAnno(key, {0, end});
            for (uint32_t i = 0; i < end; ++i) sets[i].insert(key);
        }
        return {string, sets};
    }

    void insert(uint32_t location, uint32_t length) {
        const std::vector<Ref<QzAnnoKey>> used = {keys_[upTo(1)], keys_[2 + upTo(1)]};
        const auto [string, sets] = other(length, used);
        ASSERT_TRUE(string_->insertAnnoString(*string, location));
        replace({location, 0}, length);
        for (uint32_t i = 0; i < length; ++i) {
            for (const auto& key : used) characters_[location + i].erase(key);
            characters_[location + i].insert(sets[i].begin(), sets[i].end());
        }
    }

    // With every key used, so that no tail comes into view.
    void append(uint32_t length) {
        const auto [string, sets] = other(length, keys_);
        string_->appendAnnoString(*string);
        characters_.insert(characters_.end(), sets.begin(), sets.end());
    }

    void toggleEverywhere(const Ref<QzAnnoKey>& key) {
        const bool everywhere =
            !characters_.empty() && std::ranges::all_of(characters_, [&](const Keys& k) { return k.contains(key); });
        for (Keys& k : characters_) everywhere ? void(k.erase(key)) : void(k.insert(key));
    }

    void checkRuns() {
        uint32_t i = 0;
        const Keys* previous = nullptr;
        for (const auto& [range, keys] : string_->runs()) {
            ASSERT_EQ(range.location, i);
            Range queried;
            ASSERT_TRUE(string_->annotationsAtIndex(upToWithin(range), &queried)->isEqual(*keys));
            ASSERT_EQ(queried, range);
            for (; i < range.end(); ++i) ASSERT_EQ(characters_[i], asKeys(keys));
            ASSERT_FALSE(previous && *previous == characters_[range.location]) << "a run was cut in two";
            previous = &characters_[range.location];
        }
        ASSERT_EQ(i, characters_.size());
    }
    uint32_t upToWithin(Range range) { return range.location + upTo(range.length - 1); }

    std::mt19937 random_;
    Ref<QzMutableAnnoString> string_;
    std::vector<Keys> characters_;
    std::vector<Ref<QzAnnoKey>> keys_;
};

TEST(QzMutableAnnoString, BehavesAsOneSetACharacterUnderRandomEdits) {
    // A million edits in all. Texts longer than a new bit set have rows that end inside the text.
    for (const auto& [length, seeds, steps, stepsToCheck] :
         {std::tuple{8u, 200u, 100, 3}, std::tuple{3000u, 6u, 60, 3}, std::tuple{20u, 980u, 1000, 50}}) {
        for (uint32_t seed = 1; seed <= seeds; ++seed) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", length " << length);
            CharacterModel model(seed, length);
            for (int step = 0; step < steps; ++step) {
                model.edit();
                // Not after each edit, since the checks grow the bit sets.
                if (step % stepsToCheck == 0) model.check();
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
}  // namespace qz
