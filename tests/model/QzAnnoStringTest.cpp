#include <gmock/gmock.h>

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "fuzz/EditsCheck.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RandomChoices.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class QzAnnoStringTest : public testing::Test {
protected:
    const Ref<QzAnnoKey> a = QzAnnoKey::keyWithName("A"_ns), b = QzAnnoKey::keyWithName("B"_ns);

    /// abcde with A on 0-3 and B on 2-5.
    Ref<QzMutableAnnoString> overlapping() const {
        const auto string = QzMutableAnnoString::initWithString("abcde"_ns);
        string->addAnno(a, {0, 3});
        string->addAnno(b, {2, 3});
        return string;
    }
};

std::vector<Ref<QzAnnoKey>> keysOf(const Ref<NSSet>& set) {
    return set->objects<QzAnnoKey>();
}

TEST_F(QzAnnoStringTest, FrameHoldsKeysOfEveryCharacter) {
    const auto string = QzMutableAnnoString::initWithString("Hello"_ns);
    EXPECT_EQ(string->description(), "Hello\n Frame-wide annotations: none\n");
    string->addAnno(a, {0, 1024});  // past the text's end
    string->addAnno(b, {0, 4});
    EXPECT_THAT(keysOf(string->frame()), ElementsAre(a));
    string->addAnno(b, {4, 1});
    EXPECT_THAT(keysOf(string->frame()), ElementsAre(a, b));
    Range run;
    EXPECT_TRUE(string->annotation(a, 2, &run));
    EXPECT_EQ(run, (Range{0, 5}));
    EXPECT_EQ(string->description(),
              "Hello\n Frame-wide annotations: A (Palette 0),B (Palette 0)\n"
              " \tA (Palette 0): 0-1024\n \tB (Palette 0): 0-5\n");
    const auto empty = QzMutableAnnoString::init();
    empty->addAnno(a, {0, 10});
    EXPECT_THAT(keysOf(empty->frame()), IsEmpty());
}

TEST_F(QzAnnoStringTest, SubstringKeepsEveryKey) {
    const auto string = overlapping();
    const auto substring = string->annoSubstringFromRange({3, 2});
    EXPECT_EQ(substring->className(), "QzAnnoString");
    EXPECT_EQ(substring->description(),
              "de\n Frame-wide annotations: B (Palette 0)\n \tA (Palette 0): none\n \tB (Palette 0): 0-\n");
    EXPECT_FALSE(string->annoSubstringFromRange({3, 3}));
    EXPECT_FALSE(string->annoSubstringFromRange({2, 0xFFFFFFFF}));
    EXPECT_EQ(string->annoSubstringFromRange({5, 0})->length(), 0u);
}

TEST_F(QzAnnoStringTest, EqualityAsksForTextKeysAndRuns) {
    const auto string = overlapping();
    const auto c = QzAnnoKey::keyWithName("C"_ns);
    const struct {
        const char* reason;
        Ref<QzAnnoKey> key;
        Range added;
        bool equal;
    } cases[] = {
        {"unchanged", a, {0, 3}, true},
        {"what lies past the text's end does not count", a, {5, 9}, true},
        {"a key with nothing set counts", c, {0, 0}, false},
        {"a run differs at the last character", a, {4, 1}, false},
    };
    for (const auto& edit : cases) {
        SCOPED_TRACE(edit.reason);
        const auto other = string->mutableCopy();
        other->addAnno(edit.key, edit.added);
        EXPECT_EQ(string->isEqualToAnnoString(*other), edit.equal);
        EXPECT_EQ(other->isEqualToAnnoString(*string), edit.equal);
    }
    const auto other = string->mutableCopy();
    other->replaceCharactersInRange({0, 1}, "A"_ns);
    EXPECT_FALSE(string->isEqualToAnnoString(*other));
    // The same names, yet other keys.
    const auto twin = QzMutableAnnoString::initWithString("abcde"_ns);
    twin->addAnno(QzAnnoKey::keyWithName("A"_ns), {0, 3});
    twin->addAnno(QzAnnoKey::keyWithName("B"_ns), {2, 3});
    EXPECT_FALSE(string->isEqualToAnnoString(*twin));
}

TEST_F(QzAnnoStringTest, OnlyTheImmutableStringAcceptsTheOtherClass) {
    const auto string = overlapping();
    const auto copy = string->copy();
    EXPECT_TRUE(copy->isEqual(*string));
    EXPECT_FALSE(string->isEqual(*copy));
    EXPECT_TRUE(string->isEqual(*string->mutableCopy()));
    EXPECT_EQ(copy->hash(), string->hash());
    EXPECT_FALSE(copy->isEqual(*"abcde"_ns));
    string->removeAnno(a, {0, 5});
    EXPECT_FALSE(copy->isEqual(*string)) << "a copy owns its bit sets";
}

TEST_F(QzAnnoStringTest, RunsOfTheSameKeysShareASet) {
    const auto string = QzMutableAnnoString::initWithString("a b"_ns);
    for (uint32_t i = 0; i < 3; i += 2) string->addAnno(a, {i, 1});
    const auto runs = string->runs();
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0].keys, runs[2].keys);
}

TEST_F(QzAnnoStringTest, RunIsWhereNoKeyChangesInsideTheLimit) {
    const auto string = overlapping();
    const Range untouched{77, 77};
    const struct {
        uint32_t index;
        Range limit;
        std::optional<std::vector<Ref<QzAnnoKey>>> keys;  // unset where the call is refused
        Range run;
    } cases[] = {
        {2, {0, 5}, {{a, b}}, {2, 1}},
        {0, {0, 5}, {{a}}, {0, 2}},
        {4, {0, 5}, {{b}}, {3, 2}},
        {4, {4, 1}, {{b}}, {4, 1}},
        {1, {1, 4}, {{a}}, {1, 1}},
        {5, {0, 5}, {}, untouched},
        {0, {1, 4}, {}, untouched},                    // before the limit
        {3, {0, 3}, {}, untouched},                    // after the limit
        {3, {2, 4}, {}, untouched},                    // the limit leaves the text
        {0, {5, 0xFFFFFFFF}, {}, untouched},           // its end wraps in 32 bits
        {0xFFFFFFFF, {0, 0xFFFFFFFF}, {}, untouched},  // so does the index
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.index << " in " << c.limit.location << " + " << c.limit.length);
        Range run = untouched;
        const Ref<NSSet> keys = string->annotationsAtIndex(c.index, &run, c.limit);
        ASSERT_EQ(keys != nullptr, c.keys.has_value());
        if (keys) {
            EXPECT_EQ(keysOf(keys), *c.keys);
            EXPECT_EQ(keysOf(string->annotationsAtIndex(c.index, nullptr, c.limit)), *c.keys);
        }
        EXPECT_EQ(run, c.run);
        run = untouched;
        const bool holds = string->annotation(a, c.index, &run, c.limit);
        EXPECT_EQ(holds, keys && keys->containsObject(*a));
        EXPECT_EQ(run, keys ? intersection({c.index < 3 ? 0u : 3u, c.index < 3 ? 3u : 2u}, c.limit) : untouched);
    }
    Range run;
    EXPECT_TRUE(string->annotationsAtIndex(0, &run));
    EXPECT_EQ(run, (Range{0, 2})) << "without a limit, the whole text";
}

const Ref<QzAnnoKey> A = QzAnnoKey::keyWithName("A"_ns);
const Ref<QzAnnoKey> B = QzAnnoKey::keyWithName("B"_ns);

/// The characters at which the key holds as '1', the others as '0'.
std::string mask(const QzAnnoString& string, const Ref<QzAnnoKey>& key) {
    std::string mask;
    for (uint32_t i = 0; i < string.length(); ++i) mask += string.annotation(key, i) ? '1' : '0';
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
        const char* text;  // null where the edit is refused
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

TEST(QzMutableAnnoString, TakesInAnnotatedText) {
    const auto other = annotated("XY"_ns, B, "11");
    const auto string = annotated("abcdef"_ns, A, "010000");
    EXPECT_FALSE(string->insertAnnoString(*other, 7));
    EXPECT_FALSE(string->replaceCharactersInRange({7, 0}, *other));
    EXPECT_EQ(string->allKeys()->count(), 1u) << "a refusal changes nothing";
    EXPECT_TRUE(string->replaceCharactersInRange({2, 4}, *other));
    EXPECT_EQ(mask(*string, A), "0111") << "a key of the receiver alone goes on over inserted text";
    EXPECT_EQ(mask(*string, B), "0011");
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

TEST(QzMutableAnnoString, NamingNoKeyOrAnUnholdableRangeSetsNothing) {
    const test::LogCapture log;
    const auto string = annotated("abc"_ns, A, "010");
    string->addFrameAnno({});
    string->toggleFrameAnno({});
    EXPECT_FALSE(string->bitsFor(Ref<QzAnnoKey>()));
    EXPECT_FALSE(string->annotation({}, 1));
    EXPECT_EQ(log.lines().size(), 3u) << "a line for each call that would change something";
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

/// A million edits, of texts shorter and longer than a new row of bits.
TEST(QzMutableAnnoString, BehavesAsOneSetOfKeysACharacterUnderRandomEdits) {
    constexpr int kEdits = 1'000'000;
    int edits = 0;
    for (uint32_t seed = 1; edits < kEdits; ++seed) {
        test::RandomChoices choices(seed);
        fuzz::EditsCheck check(choices);
        // Not compared after each edit, since queries make rows grow.
        const int editsToCompare = seed % 4 == 0 ? 1 : 30;
        for (int edit = 1; edit <= 300 && check.edit(); ++edit, ++edits) {
            if (edit % editsToCompare == 0) check.compare();
        }
        check.compare();
    }
}

}  // namespace
}  // namespace qz
