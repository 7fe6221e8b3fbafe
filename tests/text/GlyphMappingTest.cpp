#include <map>

#include <gmock/gmock.h>

#include "tests/text/TextSystem.h"

namespace qz {
namespace {

/// The characters of a line from left to right, each once.
std::string visualText(const TextSystem& system) {
    std::map<float, std::string> byX;
    const std::u16string_view text = system.storage->characters();
    for (uint32_t i = 0; i < text.size(); ++i) byX[system.xOfCharacter(i)] += utf8FromUtf16(text.substr(i, 1));
    std::string visual;
    for (const auto& [x, characters] : byX) visual += characters;
    return visual;
}

TEST(Bidi, runsStandInVisualOrder) {
    const struct {
        const char* text;
        NSWritingDirection direction;
        const char* visual;
        const char* why;
    } cases[] = {
        {"abc אבג def", NSWritingDirection::natural, "abc גבא def", "a Hebrew word in a Latin line"},
        {"אבג abc דהו", NSWritingDirection::natural, "והד abc גבא", "the first strong letter gives the direction"},
        {"אבג 123 דהו", NSWritingDirection::natural, "והד 123 גבא", "numbers run from left to right"},
        {"abc אבג!", NSWritingDirection::leftToRight, "abc גבא!", "neutrals go with the paragraph"},
        {"abc אבג!", NSWritingDirection::rightToLeft, "!גבא abc", "also where it is told its direction"},
        {"a\tאב\tb", NSWritingDirection::natural, "a\tבא\tb", "tabs part runs"},
    };
    for (const auto& row : cases) {
        const Ref<NSDictionary> attributes = textAttributes(paragraphStyle({.baseWritingDirection = row.direction}));
        const TextSystem system(*attributedString(row.text, attributes), {500, 0});
        EXPECT_EQ(visualText(system), row.visual) << row.why;
    }
}

TEST(Bidi, theTextOfEachLineIsOrderedByItself) {
    // One Hebrew sentence over two lines of a Latin paragraph: its first words stand in the first line.
    const TextSystem system(*attributedString("ab אבג דהו זחט"), {widthOf("ab אבג דהו"), 0});
    ASSERT_EQ(system.lineTexts(), (std::vector<std::string>{"ab אבג דהו ", "זחט"}));
    EXPECT_LT(system.xOfCharacter(7), system.xOfCharacter(3)) << "within the run from right to left";
    EXPECT_TRUE(system.manager->isRightToLeftGlyphAtIndex(3));
    EXPECT_FALSE(system.manager->isRightToLeftGlyphAtIndex(0));
    // The blank that hangs between the two lines stands at the end of the first, which is its right.
    EXPECT_NEAR(system.xOfCharacter(10), widthOf("ab אבג דהו"), 0.01);
}

/// The glyphs of the text, each with its place, when every other character has another colour.
std::vector<std::pair<NSGlyph, float>> glyphsInColours(const Ref<NSAttributedString>& text) {
    const auto colored = NSMutableAttributedString::initWithAttributedString(*text);
    for (uint32_t i = 0; i < colored->length(); i += 2) {
        colored->addAttribute(NSForegroundColorAttributeName, NSColor::whiteColor(), {i, 1});
    }
    const TextSystem system(*colored);
    std::vector<std::pair<NSGlyph, float>> glyphs;
    for (uint32_t i = 0; i < system.manager->numberOfGlyphs(); ++i) {
        glyphs.emplace_back(system.manager->glyphAtIndex(i), system.manager->locationForGlyphAtIndex(i).x);
    }
    return glyphs;
}

TEST(Shaping, seesTheTextAcrossChangesOfColour) {
    for (const char* text : {"سلام عليكم", "क्षत्रिय", "AVATAR To"}) {
        const TextSystem plain(*attributedString(text));
        const auto colored = glyphsInColours(attributedString(text));
        ASSERT_EQ(plain.manager->numberOfGlyphs(), colored.size()) << text;
        for (uint32_t i = 0; i < colored.size(); ++i) {
            EXPECT_EQ(plain.manager->glyphAtIndex(i), colored[i].first) << text << " glyph " << i;
            EXPECT_EQ(plain.manager->locationForGlyphAtIndex(i).x, colored[i].second);
        }
    }
}

TEST(Shaping, joinsLettersAcrossChangesOfSizeAndHeight) {
    const TextSystem plain(*attributedString("بيتنا"));
    for (const Ref<NSString>& name : {NSFontAttributeName, NSBaselineOffsetAttributeName}) {
        const auto text = NSMutableAttributedString::initWithAttributedString(*attributedString("بيتنا"));
        for (uint32_t i = 0; i < text->length(); i += 2) {
            const Ref<NSObject> value = name == NSFontAttributeName
                                            ? Ref<NSObject>(NSFont::fontWithName(*"DejaVu Sans"_ns, 31))
                                            : NSNumber::numberWithFloat(4);
            text->addAttribute(name, value, {i, 1});
        }
        const TextSystem styled(*text);
        ASSERT_EQ(styled.manager->numberOfGlyphs(), plain.manager->numberOfGlyphs());
        for (uint32_t i = 0; i < plain.manager->numberOfGlyphs(); ++i) {
            EXPECT_EQ(styled.manager->glyphAtIndex(i), plain.manager->glyphAtIndex(i))
                << name->utf8() << " glyph " << i;
        }
    }
}

TEST(Shaping, aStyleThatBeginsInALigatureBreaksIt) {
    EXPECT_EQ(glyphsInColours(attributedString("office")).size(), 6u) << "f|f and f|i have two colours";
    const auto glyphsWith = [](Range styled, const Ref<NSString>& name, const Ref<NSObject>& value) {
        const auto text = NSMutableAttributedString::initWithAttributedString(*attributedString("office"));
        text->addAttribute(name, value, styled);
        return TextSystem(*text).manager->numberOfGlyphs();
    };
    const Ref<NSString> layer = "Layer colour"_ns;
    EXPECT_EQ(glyphsWith({3, 3}, layer, NSColor::whiteColor()), 5u) << "ff stays one: only i is another style";
    EXPECT_EQ(glyphsWith({2, 4}, layer, NSColor::whiteColor()), 5u) << "f and then fi, which has one style";
    EXPECT_EQ(glyphsWith({1, 3}, layer, NSColor::whiteColor()), 4u) << "the ligature has one style";
    EXPECT_EQ(glyphsWith({0, 6}, NSKernAttributeName, NSNumber::numberWithFloat(2)), 6u) << "letters are spaced";
    // Equal attributes are not a change, even in separate dictionaries.
    const auto pieces = NSMutableAttributedString::init();
    for (const char16_t unit : std::u16string_view(u"office")) pieces->appendString({&unit, 1}, textAttributes());
    EXPECT_EQ(TextSystem(*pieces).manager->numberOfGlyphs(), 4u);
    // Ligatures required by a script stay joined.
    EXPECT_EQ(glyphsInColours(attributedString("لا")).size(), 1u);
}

TEST(Shaping, aWordThatIsCutKeepsItsJoinedForms) {
    const TextSystem whole(*attributedString("ببببببب"));
    const TextSystem cut(*attributedString("ببببببب"), {widthOf("بببب"), 0});
    ASSERT_GT(cut.lineTexts().size(), 1u);
    for (uint32_t i = 0; i < 7; ++i) EXPECT_EQ(cut.manager->glyphAtIndex(i), whole.manager->glyphAtIndex(i));
}

}  // namespace
}  // namespace qz
