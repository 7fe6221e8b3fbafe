#include <gmock/gmock.h>

#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/model/QzMutableAnnoString.h"

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
        std::optional<std::vector<Ref<QzAnnoKey>>> keys;  // none: refused
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

}  // namespace
}  // namespace qz
