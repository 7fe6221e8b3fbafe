#include <cmath>

#include <gmock/gmock.h>

#include "tests/text/TextSystem.h"

namespace qz {
namespace {

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
