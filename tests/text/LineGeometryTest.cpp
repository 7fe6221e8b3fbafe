#include <cmath>

#include <gmock/gmock.h>

#include "platform/foundation/ObjectMap.h"
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
        {"日本語。文字", "日本語。", "no Japanese line begins with a full stop"},
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
    // Narrower than any letter: still one cluster per line, never part of one.
    EXPECT_THAT(linesOf("ae\u0301\U0001F468\u200D\U0001F469", 1),
                ElementsAre("a", "e\u0301", "\U0001F468\u200D\U0001F469"));
    EXPECT_THAT(linesOf("fi", 1), ElementsAre("f", "i")) << "a ligature can be cut";
}

TEST(LineBreaking, aLetterMayBecomeNarrowerAtTheEndOfALine) {
    // Kerning between two Ts applies only while another T follows.
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
    // However preceding widths are rounded, a tab advances from the stop that the previous tab has reached.
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

TextSystem aligned(std::string_view text, NSTextAlignment alignment, NSSize size, float padding = 0) {
    return TextSystem(*attributedString(text, textAttributes(paragraphStyle({.alignment = alignment}))), size, padding);
}

TEST(LineGeometry, alignsWithinThePadding) {
    const float width = widthOf("word");
    const struct {
        NSTextAlignment alignment;
        float x;
    } cases[] = {{NSTextAlignment::left, 0},
                 {NSTextAlignment::natural, 0},
                 {NSTextAlignment::center, (300 - 10 - width) / 2},
                 {NSTextAlignment::right, 300 - 10 - width}};
    for (const auto& row : cases) {
        const TextSystem system = aligned("word   ", row.alignment, {300, 0}, 5);
        EXPECT_NEAR(system.usedRect().origin.x, row.x, 0.01);
        EXPECT_NEAR(system.usedRect().size.width, width + 10, 0.01) << "the text and the padding, no blanks";
        EXPECT_NEAR(system.xOfCharacter(0), row.x + 5, 0.01);
    }
    EXPECT_NEAR(aligned("שלום", NSTextAlignment::natural, {300, 0}).usedRect().maxX(), 300, 0.01);
    EXPECT_EQ(aligned("word", NSTextAlignment::right, {0, 0}).usedRect().origin.x, 0) << "no far end to align to";
}

TEST(LineGeometry, justifiesAllLinesButTheLastOfAParagraph) {
    const TextSystem system = aligned("aa bb cc dd ee ff\ngg", NSTextAlignment::justified, {widthOf("aa bb cc dd"), 0});
    const std::vector<Range> lines = system.lines();
    ASSERT_EQ(lines.size(), 3u);
    const TextSystem wider = aligned("aa bb cc dd ee ff", NSTextAlignment::justified, {widthOf("aa bb cc dd") + 9, 0});
    EXPECT_NEAR(wider.usedRect().size.width, widthOf("aa bb cc dd") + 9, 0.01);
    const float step = wider.xOfCharacter(3) - system.xOfCharacter(3);
    EXPECT_NEAR(step, 3, 0.01) << "9 points over 3 blanks";
    EXPECT_NEAR(wider.manager->lineFragmentUsedRectForGlyphAtIndex(wider.lines()[1].location).size.width,
                widthOf("ee ff"), 0.01);
    // No blanks to widen: between the characters.
    const TextSystem han = aligned("日本語日本語", NSTextAlignment::justified, {70, 0});
    EXPECT_NEAR(han.manager->lineFragmentUsedRectForGlyphAtIndex(0).size.width, 70, 0.01);
    EXPECT_NEAR(han.xOfCharacter(2), 50, 0.01) << "3 characters of 20 points, 5 points between them";
}

TEST(LineGeometry, linesAreAsHighAsTheirTallestFont) {
    const auto text = NSMutableAttributedString::initWithAttributedString(*attributedString("small "));
    text->appendAttributedString(*attributedString("BIG", textAttributes({}, 40)));
    text->appendAttributedString(*attributedString("\nsmall"));
    const TextSystem system(*text);
    const NSRect first = system.manager->lineFragmentRectForGlyphAtIndex(0);
    const NSRect second = system.manager->lineFragmentRectForGlyphAtIndex(10);
    const Ref<NSFont> small = NSFont::fontWithName(*"DejaVu Sans"_ns, 20), big = small->fontWithSize(40);
    EXPECT_NEAR(first.size.height, big->ascender() - big->descender() + big->leading(), 0.01);
    EXPECT_NEAR(second.origin.y, first.maxY(), 0.01);
    EXPECT_NEAR(second.size.height, first.size.height / 2, 0.01);
    EXPECT_NEAR(system.manager->locationForGlyphAtIndex(0).y, big->ascender(), 0.01) << "one baseline a line";
}

TEST(LineGeometry, paragraphStylesSetSpacingAndLimits) {
    const float natural = TextSystem(*attributedString("x")).usedRect().size.height;
    const auto height = [](const char* text, const NSParagraphStyle::Values& style) {
        return TextSystem(*attributedString(text, textAttributes(paragraphStyle(style)))).usedRect().size.height;
    };
    // Spacing stands between lines, not below the last one; that of paragraphs comes on top.
    EXPECT_NEAR(height("x", {.lineSpacing = 4, .paragraphSpacing = 8}), natural, 0.01);
    EXPECT_NEAR(height("x\u2028x", {.lineSpacing = 4, .paragraphSpacing = 8}), 2 * natural + 4, 0.01);
    EXPECT_NEAR(height("x\nx", {.lineSpacing = 4, .paragraphSpacing = 8}), 2 * natural + 12, 0.01);
    EXPECT_NEAR(height("x", {.minimumLineHeight = 100}), 100, 0.01);
    EXPECT_NEAR(height("x\nx", {.maximumLineHeight = 10}), 20, 0.01);
    // What a limit adds comes above the baseline.
    const TextSystem high(*attributedString("x", textAttributes(paragraphStyle({.minimumLineHeight = 100}))));
    const Ref<NSFont> font = NSFont::fontWithName(*"DejaVu Sans"_ns, 20);
    EXPECT_NEAR(high.manager->locationForGlyphAtIndex(0).y, 100 + font->descender() - font->leading(), 0.01);
}

TEST(LineGeometry, linesAreMultipliedBeforeTheyAreLimited) {
    const float natural = TextSystem(*attributedString("x")).usedRect().size.height;
    const auto systemWith = [](const NSParagraphStyle::Values& style) {
        return TextSystem(*attributedString("x\nx", textAttributes(paragraphStyle(style))));
    };
    EXPECT_NEAR(systemWith({.lineHeightMultiple = 1.5f}).usedRect().size.height, 3 * natural, 0.01);
    EXPECT_NEAR(systemWith({.maximumLineHeight = 10, .lineHeightMultiple = 1.5f}).usedRect().size.height, 20, 0.01);
    EXPECT_NEAR(systemWith({.minimumLineHeight = 50, .lineHeightMultiple = 0.5f}).usedRect().size.height, 100, 0.01);
    // Baselines stand as far apart as the lines are high.
    const TextSystem system = systemWith({.lineHeightMultiple = 2});
    const auto baseline = [&](uint32_t glyph) {
        return system.manager->lineFragmentRectForGlyphAtIndex(glyph).origin.y +
               system.manager->locationForGlyphAtIndex(glyph).y;
    };
    EXPECT_NEAR(baseline(2) - baseline(0), 2 * natural, 0.01);
}

TEST(LineGeometry, spacingBeforeParagraphsAddsToThatBehindThem) {
    const float natural = TextSystem(*attributedString("x")).usedRect().size.height;
    const auto attributes = textAttributes(paragraphStyle({.paragraphSpacing = 8, .paragraphSpacingBefore = 5}));
    const TextSystem system(*attributedString("x\u2028x\nx", attributes), {100, 0});
    EXPECT_EQ(system.manager->lineFragmentRectForGlyphAtIndex(0).origin.y, 0) << "no spacing at the top of a container";
    EXPECT_NEAR(system.manager->lineFragmentRectForGlyphAtIndex(2).origin.y, natural, 0.01)
        << "nor between the lines of a paragraph";
    EXPECT_NEAR(system.manager->lineFragmentRectForGlyphAtIndex(4).origin.y, 2 * natural + 13, 0.01);
    EXPECT_NEAR(system.usedRect().size.height, 3 * natural + 13, 0.01);
}

TEST(LineGeometry, indentsNarrowLinesFromTheLeadingMargin) {
    const struct {
        const char* text;
        NSParagraphStyle::Values style;
        float firstLine, otherLines;  // where text begins, or in a text from right to left ends, in 300 points
        const char* why;
    } cases[] = {
        {"aa\u2028bb", {.firstLineHeadIndent = 30, .headIndent = 10}, 30, 10, "a line end begins no paragraph"},
        {"aa\nbb", {.firstLineHeadIndent = 30, .headIndent = 10}, 30, 30, "a paragraph end does"},
        {"אב\u2028גד", {.firstLineHeadIndent = 30, .headIndent = 10}, 270, 290, "the leading margin is at the right"},
        {"aa\u2028bb",
         {.alignment = NSTextAlignment::center, .headIndent = 100, .tailIndent = -100},
         100 - widthOf("aa") / 2,
         150 - widthOf("bb") / 2,
         "centred between the indents"},
        {"aa\u2028bb",
         {.alignment = NSTextAlignment::right, .tailIndent = 120},
         120 - widthOf("aa"),
         120 - widthOf("bb"),
         "a positive tail indent counts from the leading margin"},
        {"אב\u2028גד",
         {.alignment = NSTextAlignment::left, .tailIndent = -40},
         40 + widthOf("אב"),
         40 + widthOf("גד"),
         "the tail is at the left"},
    };
    for (const auto& row : cases) {
        const TextSystem system(*attributedString(row.text, textAttributes(paragraphStyle(row.style))), {310, 0}, 5);
        const auto edge = [&](uint32_t character) {
            const NSRect used = system.manager->lineFragmentUsedRectForGlyphAtIndex(character);
            return (system.manager->isRightToLeftGlyphAtIndex(character) ? used.maxX() - 5 : used.origin.x + 5) - 5;
        };
        EXPECT_NEAR(edge(0), row.firstLine, 0.01) << row.why;
        EXPECT_NEAR(edge(3), row.otherLines, 0.01) << row.why;
    }
    // Lines are broken by the remaining width, even in an unbounded container.
    const float room = widthOf("one two");
    const auto lines = [&](float width, const NSParagraphStyle::Values& style) {
        return TextSystem(*attributedString("one two three", textAttributes(paragraphStyle(style))), {width, 0})
            .lineTexts();
    };
    EXPECT_EQ(lines(room + 20, {.firstLineHeadIndent = 20})[0], "one two ");
    EXPECT_EQ(lines(room + 19, {.firstLineHeadIndent = 20})[0], "one ");
    EXPECT_EQ(lines(0, {.tailIndent = room + 1})[0], "one two ");
}

TEST(LineGeometry, tabStopsAlignWhatStandsBehindThem) {
    using Alignment = NSTextTab::Alignment;
    const struct {
        const char* text;
        std::vector<NSTextTab> tabs;
        uint32_t character;
        float x;
        const char* why;
    } cases[] = {
        {"a\tbb\tc", {{100}, {150}}, 2, 100, "the first stop"},
        {"a\tbb\tc", {{150}, {100}}, 5, 150, "in the order of their places"},
        {"a\tbb\tc", {{100}}, 5, 140, "behind the last stop, multiples of 28"},
        {"a\tbb\tc", {{100, Alignment::right}}, 2, 100 - widthOf("bb"), "ends at the stop"},
        {"a\tbb", {{100, Alignment::center}}, 2, 100 - widthOf("bb") / 2, "its middle at the stop"},
        {"a\t1.75", {{100, Alignment::decimal}}, 2, 100 - widthOf("1"), "its decimal point at the stop"},
        {"a\tbb", {{100, Alignment::decimal}}, 2, 100 - widthOf("bb"), "without one, its end"},
        {"wide\tbbbbbb", {{60, Alignment::right}}, 5, widthOf("wide"), "no room to the left of the stop"},
    };
    for (const auto& row : cases) {
        const TextSystem system(*attributedString(row.text, textAttributes(paragraphStyle({.tabStops = row.tabs}))),
                                {500, 0});
        EXPECT_NEAR(system.xOfCharacter(row.character), row.x, 0.01) << row.text << ": " << row.why;
    }
    const NSParagraphStyle::Values indented = {.firstLineHeadIndent = 30, .defaultTabInterval = 50};
    const TextSystem system(*attributedString("a\tb", textAttributes(paragraphStyle(indented))), {500, 0});
    EXPECT_NEAR(system.xOfCharacter(2), 50, 0.01) << "stops count from the margin, not from the indent";
    const TextSystem hebrew(*attributedString("א\tב", textAttributes(paragraphStyle({.tabStops = {{100}}}))), {500, 0});
    EXPECT_NEAR(hebrew.xOfCharacter(2) + widthOf("ב"), 400, 0.01) << "from the right";
}

TEST(Justification, lengthensArabicWordsByKashidas) {
    const Ref<NSFont> font = NSFont::fontWithName(*"NotoNaskhArabic-Regular"_ns, 20);
    const NSGlyph kashida = font->glyphForCharacter(0x0640);
    const auto kashidas = [&](const TextSystem& system, Range glyphs) {
        std::vector<uint32_t> characters;
        for (uint32_t i = glyphs.location; i < glyphs.end(); ++i) {
            if (system.manager->glyphAtIndex(i) != kashida) continue;
            characters.push_back(system.manager->characterIndexForGlyphAtIndex(i));
            EXPECT_NEAR(system.manager->locationForGlyphAtIndex(i).y, system.manager->locationForGlyphAtIndex(0).y,
                        0.01);
        }
        return characters;
    };
    ObjectMap style = paragraphStyle({.alignment = NSTextAlignment::justified});
    style.set(NSFontAttributeName, font);
    const auto attributes = NSDictionary::dictionaryWithMap(style);
    const std::string text = "سلام على مسلم دار مسلم سلام";
    const float room = widthOf("سلام على مسلم دار", attributes) + 30;
    const TextSystem system(*attributedString(text, attributes), {room, 0});
    ASSERT_EQ(system.lines().size(), 2u);
    const std::vector<uint32_t> found = kashidas(system, system.lines()[0]);
    ASSERT_FALSE(found.empty());
    // Behind the seen of words that have one; never in a word whose letters do not join.
    for (const uint32_t character : found) EXPECT_THAT(character, testing::AnyOf(0u, 5u, 6u, 10u)) << character;
    EXPECT_NEAR(system.manager->lineFragmentUsedRectForGlyphAtIndex(0).size.width, room, 0.01)
        << "blanks take the rest";
    EXPECT_TRUE(kashidas(system, system.lines()[1]).empty()) << "the last line is not stretched";
    // Every character is still found by its glyphs, and the other way round.
    const Range line = system.lines()[0];
    EXPECT_EQ(system.manager->glyphRangeForCharacterRange(system.manager->characterRangeForGlyphRange(line)), line);
    // A sloping script has no level strokes to lengthen.
    style.set(NSFontAttributeName, NSFont::fontWithName(*"NotoNastaliqUrdu-Regular"_ns, 20));
    const TextSystem nastaliq(*attributedString(text, NSDictionary::dictionaryWithMap(style)), {200, 0});
    EXPECT_GT(nastaliq.lines().size(), 1u);
    EXPECT_NEAR(nastaliq.manager->lineFragmentUsedRectForGlyphAtIndex(0).size.width, 200, 0.01);
    EXPECT_EQ(nastaliq.manager->numberOfGlyphs(),
              TextSystem(*attributedString(text, textAttributes(attributePair(NSFontAttributeName,
                                                                              style.find(*NSFontAttributeName)))))
                  .manager->numberOfGlyphs());
}

TEST(Justification, putsRoomBetweenIdeographsAsWellAsWords) {
    const TextSystem system = aligned("日本 語日本語日本語", NSTextAlignment::justified, {110, 0});
    // Five characters of 20 points and a blank in the first line: 日|本| |語|日.
    const float gap = system.xOfCharacter(1) - system.xOfCharacter(0) - 20;
    EXPECT_GT(gap, 0.5f);
    EXPECT_NEAR(system.xOfCharacter(4) - system.xOfCharacter(3) - 20, gap, 0.01);
    const TextSystem thai = aligned("สวัสดี ชาวโลก สวัสดี", NSTextAlignment::justified, {widthOf("สวัสดี ชาวโลก") + 20, 0});
    EXPECT_NEAR(thai.xOfCharacter(1) - thai.xOfCharacter(0) - widthOf("ส"), 2, 0.5) << "a little behind each syllable";
    const TextSystem korean = aligned("한국 어한국어 한국어", NSTextAlignment::justified, {130, 0});
    EXPECT_NEAR(korean.xOfCharacter(1) - korean.xOfCharacter(0), widthOf("한"), 0.01) << "Korean parts words by blanks";
}

TEST(LineGeometry, anEmptyLineFollowsATextThatEndsWithALineEnd) {
    const float line = TextSystem(*attributedString("x")).usedRect().size.height;
    for (const char* text : {"x\n", "x\r\n", "x\u2029", "x\u2028"}) {
        EXPECT_NEAR(TextSystem(*attributedString(text)).usedRect().size.height, 2 * line, 0.01);
    }
    EXPECT_EQ(TextSystem(*attributedString("")).usedRect(), NSRect());
}

TEST(LineGeometry, kerningAddsToEachClusterAndBaselineOffsetRaises) {
    const Ref<NSDictionary> kerned = textAttributes(attributePair(NSKernAttributeName, NSNumber::numberWithFloat(3)));
    EXPECT_NEAR(widthOf("abcd", kerned), widthOf("abcd") + 4 * 3, 0.01);
    EXPECT_NEAR(widthOf("e\u0301e\u0301", kerned), widthOf("e\u0301e\u0301") + 2 * 3, 0.01)
        << "marks stay on their letters";
    EXPECT_NEAR(widthOf("שלום", kerned), widthOf("שלום") + 4 * 3, 0.01);
    // Joined letters stay joined: room stands behind the alef and at the end only.
    EXPECT_NEAR(widthOf("بابب", kerned), widthOf("بابب") + 2 * 3, 0.01);
    // Behind each letter, in its direction: the first letter of a right-to-left line stays at the right end.
    const TextSystem hebrew(*attributedString("שלום", kerned)), plain(*attributedString("שלום"));
    EXPECT_NEAR(hebrew.xOfCharacter(0) - plain.xOfCharacter(0), 4 * 3, 0.01);

    const auto text = NSMutableAttributedString::initWithAttributedString(*attributedString("ab"));
    text->addAttribute(NSBaselineOffsetAttributeName, NSNumber::numberWithFloat(7), {1, 1});
    const TextSystem raised(*text), level(*attributedString("ab"));
    EXPECT_NEAR(raised.manager->locationForGlyphAtIndex(0).y - raised.manager->locationForGlyphAtIndex(1).y, 7, 0.01);
    EXPECT_NEAR(raised.usedRect().size.height - level.usedRect().size.height, 7, 0.01) << "the line grows for it";
}

TEST(LineGeometry, lengthsThatAreNoNumbersCountAsNone) {
    ObjectMap attributes = paragraphStyle({.lineSpacing = NAN, .minimumLineHeight = INFINITY});
    attributes.set(NSKernAttributeName, NSNumber::numberWithFloat(INFINITY));
    attributes.set(NSBaselineOffsetAttributeName, NSNumber::numberWithFloat(NAN));
    const NSRect odd = TextSystem(*attributedString("abc abc", textAttributes(attributes)), {60, 0}).usedRect();
    EXPECT_EQ(odd, TextSystem(*attributedString("abc abc"), {60, 0}).usedRect());
}

}  // namespace
}  // namespace qz
