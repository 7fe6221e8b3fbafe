#include <gmock/gmock.h>

#include "platform/text/FontFace.h"
#include "platform/text/FontFixing.h"

namespace qz {
namespace {

Ref<NSFont> fontNamed(const char* name) {
    return NSFont::fontWithName(*NSString::stringWithUTF8String(name), 20);
}

/// One letter for each stretch and its length: "a" the font asked for, "e" one of colour, "f" another.
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

}  // namespace
}  // namespace qz
