#include <cmath>

#include <gmock/gmock.h>

#include "tests/text/TextSystem.h"

namespace qz {
namespace {

using testing::ElementsAre;

std::vector<std::string> linesOf(std::string_view text, float width) {
    return TextSystem(*attributedString(text), {width, 0}).lineTexts();
}

TEST(LineBreaking, fillsLinesGreedilyAndLetsWhiteSpaceHang) {
    const float room = widthOf("one two");
    EXPECT_THAT(linesOf("one two three", room), ElementsAre("one two ", "three"));
    // Blanks at the end of a line need no room, however many there are.
    EXPECT_THAT(linesOf("one two      three", room), ElementsAre("one two      ", "three"));
    EXPECT_THAT(linesOf("one two three", room - 1), ElementsAre("one ", "two ", "three"));
    EXPECT_THAT(linesOf("one two    ", room), ElementsAre("one two    "));
}

TEST(LineBreaking, followsTheRulesOfScripts) {
    const struct {
        const char* text;
        const char* firstLine;
        const char* why;
    } cases[] = {
        {"ab\u00A0cd ef", "ab\u00A0cd ", "a no-break space keeps its words together"},
        {"ภาษาไทย", "ภาษา", "Thai breaks between words of a dictionary"},
        {"日本語。文字", "日本語。", "no Japanese line begins with a full stop"},
        {"「日本」", "「日", "no Japanese line ends with an opening bracket"},
        {"ein-fach", "ein-", "a hyphen may end a line"},
        {"おちゃっと", "お", "no Japanese line begins with a small kana"},
        {"좋은 저녁", "좋은 ", "Korean words are kept whole"},
    };
    for (const auto& row : cases) {
        const std::string_view text = row.text;
        const float room = widthOf(row.firstLine) + 1;
        EXPECT_EQ(linesOf(text, room).front(), row.firstLine) << row.why;
        EXPECT_GT(linesOf(text, room).size(), 1u);
    }
}

TEST(LineBreaking, cutsAWordThatIsLongerThanALineBetweenClusters) {
    EXPECT_THAT(linesOf("abcdef", widthOf("abc") + 0.5f), ElementsAre("abc", "def"));
    // Narrower than any letter: one cluster a line all the same, and never a part of one.
    EXPECT_THAT(linesOf("ae\u0301\U0001F468\u200D\U0001F469", 1),
                ElementsAre("a", "e\u0301", "\U0001F468\u200D\U0001F469"));
    EXPECT_THAT(linesOf("fi", 1), ElementsAre("f", "i")) << "a ligature can be cut";
}

TEST(LineBreaking, aLetterMayBecomeNarrowerAtTheEndOfALine) {
    // Two Ts keep a distance, which a T needs only while another follows.
    const Ref<NSDictionary> serif = NSDictionary::dictionaryWithMap(
        attributePair(NSFontAttributeName, NSFont::fontWithName(*"DejaVu Serif"_ns, 20)));
    ASSERT_GT(widthOf("TT", serif), 2 * widthOf("T", serif) + 0.1f);
    EXPECT_THAT(TextSystem(*attributedString("TTTT", serif), {widthOf("TT", serif), 0}).lineTexts(),
                ElementsAre("TT", "TT"));
}

TEST(LineBreaking, showsASoftHyphenOnlyWhereALineBreaksAtIt) {
    const std::string text = "Schiff\u00ADfahrt";
    EXPECT_FLOAT_EQ(widthOf(text), widthOf("Schifffahrt"));
    const TextSystem broken(*attributedString(text), {widthOf("Schiff-") + 1, 0});
    EXPECT_THAT(broken.lineTexts(), ElementsAre("Schiff\u00AD", "fahrt"));
    const uint32_t hyphen = static_cast<uint32_t>(broken.lines()[0].end()) - 1;
    EXPECT_FALSE(broken.manager->notShownAttributeForGlyphAtIndex(hyphen));
    EXPECT_NE(broken.manager->glyphAtIndex(hyphen), NSControlGlyph);
    EXPECT_GT(broken.manager->advanceForGlyphAtIndex(hyphen), 1);
    // The hyphen must fit as well.
    EXPECT_THAT(linesOf("ab\u00ADcd", widthOf("ab") + 0.5f), ElementsAre("a", "b\u00AD", "cd"))
        << "cut, since ab- is too wide";
}

TEST(LineBreaking, endsLinesAtEverySeparator) {
    EXPECT_THAT(linesOf("a\nb\r\nc\rd\u2029e\u0085f\u2028g\vh\fi", 500),
                ElementsAre("a\n", "b\r\n", "c\r", "d\u2029", "e\u0085", "f\u2028", "g\v", "h\f", "i"));
    EXPECT_THAT(linesOf("a\n\n\nb", 500), ElementsAre("a\n", "\n", "\n", "b"));
}

TEST(LineBreaking, tabsLeadToMultiplesOf28Points) {
    const TextSystem system(*attributedString("a\tb\tiiiiiiiiii\tc\td"));
    EXPECT_FLOAT_EQ(system.xOfCharacter(2), 28);
    EXPECT_FLOAT_EQ(system.xOfCharacter(4), 56);
    EXPECT_FLOAT_EQ(system.xOfCharacter(15), 56 + 28 * std::ceil(widthOf("iiiiiiiiii") / 28));
    // However the widths before it are rounded, a tab leads on from the stop that the one before has reached.
    for (float size = 5; size < 40; size += 0.7f) {
        EXPECT_NEAR(TextSystem(*attributedString("abc\t\t\tx", textAttributes({}, size))).xOfCharacter(6),
                    28 * (std::floor(widthOf("abc", textAttributes({}, size)) / 28) + 3), 0.01);
    }
}

TEST(LineBreaking, aBoxOfTheUsedWidthHoldsTheSameLines) {
    for (const char* text : {"The quick brown fox jumps over the lazy dog AVAVA To Te, again",
                             "السلام عليكم ورحمة الله وبركاته", "日本語の文章は単語の間に空白を入れません"}) {
        for (float width = 60; width < 260; width += 7.3f) {
            const TextSystem wide(*attributedString(text), {width, 0}, 5);
            const TextSystem tight(*attributedString(text), {std::ceil(wide.usedRect().size.width), 0}, 5);
            EXPECT_EQ(tight.lineTexts(), wide.lineTexts()) << width;
            EXPECT_LE(wide.usedRect().size.width, width);
        }
    }
}

}  // namespace
}  // namespace qz
