#include <gmock/gmock.h>

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "fuzz/EditsCheck.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RandomChoices.h"

namespace qz {
namespace {

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
