#include <gmock/gmock.h>

#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/text/FontFace.h"
#include "platform/text/FontFallback.h"
#include "platform/text/FontFixing.h"
#include "platform/text/Shaping.h"
#include "tests/text/TextSystem.h"

namespace qz {
namespace {

Ref<NSFont> fontNamed(const char* name, float size = 20) {
    return NSFont::fontWithName(*NSString::stringWithUTF8String(name), size);
}

std::string fallbackName(const char* font, std::u16string_view text, std::string_view language = {}) {
    return fontForText(fontNamed(font), text, language)->fontName()->utf8();
}

bool hasMissingGlyph(std::u16string_view text, const Ref<NSFont>& font, bool isRightToLeft) {
    for (const ShapedGlyph& glyph :
         shape({text, {0, static_cast<uint32_t>(text.size())}, font, 0, isRightToLeft, ""})) {
        if (glyph.glyph == 0) return true;
    }
    return false;
}

TEST(FallbackTest, ServesTheScriptsThatALatinFontLacks) {
    const struct {
        std::u16string_view text;
        bool isRightToLeft;
        const char *language, *reason;
    } cases[] = {
        {u"عنوان", true, "", "Arabic"},
        {u"כּוֹתֶרֶת", true, "", "Hebrew with points"},
        {u"शीर्षक", false, "", "Devanagari"},
        {u"\U0001F44D\U0001F3FD", false, "", "emoji with a skin tone"},
        {u"1\uFE0F\u20E3", false, "", "a keycap"},
        {u"\U00013000", false, "", "a hieroglyph beyond the first plane"},
    };
    for (const auto& [text, isRightToLeft, language, reason] : cases) {
        const Ref<NSFont> base = fontNamed("NotoSans-Regular", 33);
        ASSERT_TRUE(hasMissingGlyph(text, base, isRightToLeft)) << reason;
        const Ref<NSFont> font = fontForText(base, text, language);
        EXPECT_TRUE(font->coversText(text)) << reason << ": " << font->description();
        EXPECT_FALSE(hasMissingGlyph(text, font, isRightToLeft)) << reason << ": " << font->description();
        EXPECT_EQ(font->pointSize(), 33) << reason;
        EXPECT_TRUE(fontForText(base, text, language)->isEqual(*font)) << reason << ": remembered";
    }
}

TEST(FallbackTest, KeepsTheFontThatServes) {
    const Ref<NSFont> font = fontNamed("DejaVuSans");
    EXPECT_EQ(fontForText(font, u"Title, عنوان\t\u2028"), font);
    EXPECT_EQ(fontForText(font, u""), font);
    EXPECT_EQ(fontForText(font, u"\U000FFFF0"), font) << "no font has the character";
    EXPECT_EQ(fontForText(font, u"a\U000FFFF0"), font) << "its letter at least is served by the font itself";
    EXPECT_EQ(fallbackName("NotoSans-Regular", u"タ\U000FFFF0"), fallbackName("NotoSans-Regular", u"タ"))
        << "its letter at least is served";
}

TEST(FallbackTest, FollowsThePresentationOfEmoji) {
    const struct {
        const char* font;
        std::u16string_view text;
        const char *found, *reason;
    } cases[] = {
        {"DejaVuSans", u"\u2764", "DejaVuSans", "plain by nature"},
        {"DejaVuSans", u"\u2764\uFE0F", "NotoColorEmoji", "asked for in colour"},
        {"DejaVuSans", u"\u2764\uFE0E", "DejaVuSans", "asked for plain"},
        {"DejaVuSans", u"\U0001F600", "NotoColorEmoji", "in colour by nature, though the font has a plain one"},
        {"DejaVuSans", u"\U0001F600\uFE0E", "DejaVuSans", "asked for plain"},
        {"DejaVuSans", u"\u2764\uFE0F\u200D\U0001F525", "NotoColorEmoji", "joined"},
        {"NotoColorEmoji", u"\U0001F600", "NotoColorEmoji", "itself"},
        {"NotoSans-Regular", u"\u260E\uFE0F", "NotoColorEmoji", "asked for in colour"},
        {"NotoSans-Regular", u"\U0001F9FF\uFE0E", "NotoColorEmoji", "no plain font has it"},
    };
    for (const auto& [font, text, found, reason] : cases) EXPECT_EQ(fallbackName(font, text), found) << reason;
    EXPECT_FALSE(fontForText(fontNamed("NotoSans-Regular"), u"\u260E")->face().hasColourGlyphs())
        << "a plain telephone";
    EXPECT_FALSE(fontForText(fontNamed("NotoColorEmoji"), u"\u2764\uFE0E")->face().hasColourGlyphs())
        << "a plain heart";
}

TEST(FallbackTest, KeepsTheLookAndFollowsTheLanguage) {
    EXPECT_THAT(fallbackName("NotoSans-Bold", u"शीर्षक"), testing::EndsWith("-Bold"));
    EXPECT_THAT(fallbackName("NotoSans-Regular", u"शीर्षक"), testing::EndsWith("-Regular"));
    const struct {
        const char *language, *found;
    } cases[] = {
        {"", "NotoSansCJKjp-Regular"},      {"ja", "NotoSansCJKjp-Regular"},
        {"ko-KR", "NotoSansCJKkr-Regular"}, {"zh-Hans", "NotoSansCJKsc-Regular"},
        {"zh", "NotoSansCJKsc-Regular"},    {"zh-Hant", "NotoSansCJKtc-Regular"},
        {"zh-TW", "NotoSansCJKtc-Regular"}, {"zh-Hant-HK", "NotoSansCJKhk-Regular"},
    };
    for (const auto& [language, found] : cases) {
        EXPECT_EQ(fallbackName("NotoSans-Regular", u"骨", language), found) << language;
    }
    EXPECT_EQ(fallbackName("NotoSans-Regular", u"骨とスープ"), "NotoSansCJKjp-Regular") << "Kana tells";
    EXPECT_EQ(fallbackName("NotoSans-Regular", u"漢字와 한글"), "NotoSansCJKkr-Regular") << "Hangul tells";
    EXPECT_EQ(fallbackName("NotoSans-Regular", u"视频标题"), "NotoSansCJKsc-Regular") << "simplified letters tell";
    EXPECT_EQ(fallbackName("NotoSans-Regular", u"عنوان", "ja"), "NotoSansArabic-Regular") << "not a Japanese matter";
    EXPECT_EQ(fallbackName("NotoSans-Bold", u"ー", "ja"), "NotoSansCJKjp-Bold") << "a mark that two scripts share";
    EXPECT_EQ(fallbackName("NotoSans-Regular", u"骨", "en"), "NotoSansCJKjp-Regular") << "English has no Han";
    EXPECT_FALSE(fontForText(fontNamed("NotoSans-Regular"), u"骨", "no language at all!")->fontName()->utf8().empty());
}

/// One letter for each stretch and its length: "a" for the requested font, "e" for a colour font, "f" for another.
std::string stretchesOf(const char* font, std::u16string_view text) {
    const Ref<NSFont> asked = fontNamed(font);
    std::string shown;
    uint32_t start = 0;
    for (const FontStretch& stretch : fontsForText(asked, text)) {
        const bool isColour = stretch.font->face().hasColourGlyphs();
        shown += (stretch.font->isEqual(*asked) ? "a" : isColour ? "e" : "f") + std::to_string(stretch.end - start);
        start = stretch.end;
    }
    return shown;
}

TEST(FontFixingTest, FontsChangeAsSeldomAsTheTextAllows) {
    const struct {
        std::u16string text;
        const char *stretches, *reason;
    } cases[] = {
        {u"Title 2", "a7", "all served"},
        {u"第2話 “東京” 2024年", "f14", "digits, blanks and quotes stand between Japanese"},
        {u"2024年 12月", "a4f5", "digits before it do not"},
        {u"東京2024", "f2a4", "nor behind it"},
        {u"東京 Tokyo 京都", "f2a7f2", "letters of the font asked for stay in it, and the blanks round them"},
        {u"東京\n京都", "f2a1f2", "lines are apart"},
        {u"مرحبا 123 عالم", "f14", "digits between Arabic"},
        {u"日本 ไทย", "f2a1f3", "a blank between two fonts is in neither"},
        {u"\U0001F600 2 \U0001F600", "e2a3e2", "digits of an emoji font are parts of keycaps"},
        {u"\U0001F600\u2601", "e2f1", "a plain cloud is none for following an emoji"},
        {u"a\U0001F468\u200D\U0001F469\u200D\U0001F467b", "a1e8a1", "joined emoji"},
        {u"\u2764\uFE0F\U0001F44D\U0001F3FD1\uFE0F\u20E3", "e9", "a heart in colour, a skin tone, a keycap"},
        {u"e\u0301\u0915\u094D\u0937\u093F", "a2f4", "marks stay with their letters"},
        {u"\U000FFFF0 \U000FFFF0", "a5", "what nobody has stays in the font asked for"},
    };
    for (const auto& [text, stretches, reason] : cases) {
        EXPECT_EQ(stretchesOf("Noto Sans", text), stretches) << reason;
    }
}

Ref<NSFont> fontAt(const NSAttributedString& text, uint32_t index) {
    return text.attributesAtIndex(index)->objectForKey<NSFont>(*NSFontAttributeName);
}
bool isSubstituteAt(const NSAttributedString& text, uint32_t index) {
    return text.attributesAtIndex(index)->objectForKey(*NSOriginalFontAttributeName) != nullptr;
}

/// A font for Latin letters that has neither Hebrew nor Thai nor Japanese.
Ref<NSDictionary> latinOnly() {
    return NSDictionary::dictionaryWithMap(attributePair(NSFontAttributeName, fontNamed("Noto Sans")));
}

TEST(TextStorageTest, givesTextAFontThatHasItsCharacters) {
    const auto storage = NSTextStorage::init();
    storage->setAttributedString(*attributedString("Latin, שלום ไทย 日本語 👍🏽!", latinOnly()));
    for (uint32_t i = 0; i < storage->length(); ++i) {
        const bool isLatin = storage->characters()[i] < 0x80;
        EXPECT_EQ(fontAt(*storage, i)->isEqual(*fontNamed("Noto Sans")), isLatin)
            << "blanks and Latin keep the font asked for: " << i;
        EXPECT_EQ(isSubstituteAt(*storage, i), !isLatin);
    }
    EXPECT_TRUE(fontAt(*storage, 7)->coversText(u"שלום"));
    storage->appendString(u"ab", nullptr);
    EXPECT_TRUE(fontAt(*storage, storage->length() - 1)) << "without attributes too";
    // A mark of another colour stays with its letter.
    storage->setAttributedString(*attributedString("שָׁ", latinOnly()));
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::whiteColor(), {1, 1});
    EXPECT_EQ(fontAt(*storage, 0), fontAt(*storage, 1));
    EXPECT_EQ(fontAt(*storage, 0), fontAt(*storage, 2));
}

TEST(TextStorageTest, goesBackToTheFontAskedForWhereItServesAgain) {
    const auto storage = NSTextStorage::init(), copy = NSTextStorage::init();
    storage->setAttributedString(*attributedString("שלום", latinOnly()));
    copy->setAttributedString(*storage->copy());
    EXPECT_TRUE(copy->isEqual(*storage)) << "a copy of a fixed text asks for the same as the text did";
    copy->replaceCharactersInRange({0, 4}, "Latin"_ns);
    EXPECT_TRUE(fontAt(*copy, 0)->isEqual(*fontNamed("Noto Sans")));
    EXPECT_FALSE(isSubstituteAt(*copy, 0));
    // A font set over a substitute becomes the requested font.
    storage->addAttribute(NSFontAttributeName, NSFont::fontWithName(*"DejaVu Sans"_ns, 20), {0, 4});
    EXPECT_EQ(fontAt(*storage, 0)->familyName()->utf8(), "DejaVu Sans");
    EXPECT_FALSE(isSubstituteAt(*storage, 0));
}

}  // namespace
}  // namespace qz
