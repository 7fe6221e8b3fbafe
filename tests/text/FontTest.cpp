#include <cstdlib>
#include <limits>
#include <optional>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/text/FontFace.h"
#include "platform/text/GlyphOutline.h"
#include "platform/text/GlyphPath.h"
#include "platform/text/Shaping.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

Ref<NSFont> fontNamed(const std::string& name, float size = 20) {
    return NSFont::fontWithName(*NSString::stringWithUTF8String(name), size);
}

std::string nameFound(const std::string& asked) {
    const Ref<NSFont> font = fontNamed(asked);
    return font ? font->fontName()->utf8() : "none";
}

TEST(FontTest, FindsFacesByTheirNames) {
    const struct {
        const char *asked, *found, *reason;
    } cases[] = {
        {"DejaVuSans-Bold", "DejaVuSans-Bold", "PostScript name"},
        {"dejavusans-bold", "DejaVuSans-Bold", "case does not count"},
        {"DejaVu Sans Bold", "DejaVuSans-Bold", "full name"},
        {"DejaVu Sans-Bold", "DejaVuSans-Bold", "family-style; the condensed face is a Bold of another family"},
        {"DejaVu Sans Condensed-Bold", "DejaVuSansCondensed-Bold", "family-style of its own family"},
        {"DejaVu Sans-Condensed Bold", "DejaVuSansCondensed-Bold", "family-style of the larger family"},
        {"DejaVu Sans", "DejaVuSans", "family; Book is its regular face, not ExtraLight"},
        {"DejaVu Serif", "DejaVuSerif", "family; upright before italic"},
        {"DejaVu Sans Condensed", "DejaVuSansCondensed", "family and full name"},
        {"DejaVu Serif-Bold Italic", "DejaVuSerif-BoldItalic", "a style of two words"},
        {"Noto Sans", "NotoSans-Regular", "family whose full name has a Regular"},
        {"Noto Sans CJK JP", "NotoSansCJKjp-Regular", "the first face of a collection"},
        {"Noto Sans Mono CJK HK-Bold", "NotoSansMonoCJKhk-Bold", "the last face of a collection"},
        {"Noto Color Emoji", "NotoColorEmoji", "a font of pictures"},
        {"No Such Font", "none", "Fontconfig would offer another"},
        {"DejaVu Sans-", "none", "no style"},
        {"DejaVu Sans-Heavy", "none", "the family lacks the style"},
        {"DejaVu", "none", "part of a name"},
        {"sans-serif", "none", "an alias is no font"},
        {"", "none", "no name"},
        {"\xFF\xFE", "none", "no text"},
    };
    for (const auto& [asked, found, reason] : cases) EXPECT_EQ(nameFound(asked), found) << asked << ": " << reason;
}

TEST(FontTest, SizesFollowTheirRules) {
    constexpr float kNone = -1;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const struct {
        float size, named, system;
    } cases[] = {
        {72, 72, 72},         {0.25f, 0.25f, 0.25f}, {0, 12, 13},
        {-5, 12, 13},         {-infinity, 12, 13},   {10000, 10000, 10000},
        {1e9f, kNone, 10000}, {nan, kNone, 13},      {infinity, kNone, 10000},
    };
    const Ref<NSFont> any = fontNamed("DejaVu Sans", 20);
    const auto sizeOf = [](const Ref<NSFont>& font) { return font ? font->pointSize() : kNone; };
    for (const auto& [size, named, system] : cases) {
        EXPECT_EQ(sizeOf(fontNamed("DejaVu Sans", size)), named) << size;
        EXPECT_EQ(sizeOf(any->fontWithSize(size)), named) << size;
        EXPECT_EQ(sizeOf(NSFont::systemFontOfSize(size)), system) << size;
        EXPECT_EQ(sizeOf(NSFont::titleBarFontOfSize(size)), system) << size;
    }
    EXPECT_TRUE(any->isEqual(*fontNamed("DejaVuSans", 20)));
    EXPECT_EQ(any->hash(), fontNamed("DejaVuSans", 20)->hash());
    EXPECT_FALSE(any->isEqual(*fontNamed("DejaVuSans", 21)));
    EXPECT_FALSE(any->isEqual(*fontNamed("DejaVuSans-Bold", 20)));
}

TEST(FontTest, TraitsChooseAmongTheFacesOfTheFamily) {
    constexpr std::optional<bool> as, yes = true, no = false;
    const struct {
        const char* named;
        FontTraits asked;
        const char* found;
        FontTraits unmet;
        const char* reason;
    } cases[] = {
        {"DejaVu Sans", {yes, as}, "DejaVuSans-Bold", {}, "the bold sister"},
        {"DejaVuSans", {as, yes}, "DejaVuSans-Oblique", {}, "oblique counts as italic"},
        {"DejaVu Serif", {yes, yes}, "DejaVuSerif-BoldItalic", {}, "both"},
        {"DejaVu Sans Bold", {no, as}, "DejaVuSans", {}, "and back"},
        {"DejaVu Sans Bold", {as, yes}, "DejaVuSans-BoldOblique", {}, "what is not asked stays"},
        {"DejaVu Serif-Bold Italic", {no, no}, "DejaVuSerif", {}, "neither"},
        {"DejaVu Sans Condensed", {yes, as}, "DejaVuSansCondensed-Bold", {}, "the width is kept"},
        {"DejaVu Sans-ExtraLight", {yes, as}, "DejaVuSans-Bold", {}, "from another weight"},
        {"Inter", {yes, yes}, "Inter-BoldItalic", {}, "a named instance, in another file"},
        {"Inter-Medium", {as, yes}, "Inter-MediumItalic", {}, "nearest in weight"},
        {"Inter-Semi Bold", {yes, as}, "Inter-Bold", {}, "bolder than semibold"},
        {"Inter-Black", {yes, as}, "Inter-Black", {}, "bold enough"},
        {"Noto Sans CJK JP", {yes, as}, "NotoSansCJKjp-Bold", {}, "of a collection"},
        {"Noto Sans CJK JP", {yes, yes}, "NotoSansCJKjp-Bold", {as, yes}, "the real bold, slanted"},
        {"DejaVu Math TeX Gyre", {yes, no}, "DejaVuMathTeXGyre-Regular", {yes, as}, "the only one, emboldened"},
        {"Noto Color Emoji", {yes, yes}, "NotoColorEmoji", {}, "pictures have no traits"},
    };
    for (const auto& [named, asked, found, unmet, reason] : cases) {
        SCOPED_TRACE(std::string(named) + ": " + reason);
        const Ref<NSFont> plain = fontNamed(named), font = plain->fontWithTraits(asked);
        EXPECT_EQ(font->fontName()->utf8(), found);
        EXPECT_TRUE(font->unmetTraits() == unmet);
        EXPECT_EQ(font->pointSize(), 20);
        EXPECT_TRUE(font->isEqual(*plain->fontWithTraits(asked))) << "the same face again";
        if (unmet.isEmpty()) continue;
        // Synthesis does not change line breaks: a heavier or slanted outline has the same advance.
        const NSGlyph glyph = font->glyphForCharacter(U'I');
        const Ref<NSFont> real = fontNamed(found);
        EXPECT_EQ(font->advancementForGlyph(glyph), real->advancementForGlyph(glyph));
        const NSRect box = font->boundingRectForGlyph(glyph), realBox = real->boundingRectForGlyph(glyph);
        const float slant = unmet.italic ? 0.2126f * realBox.size.height : 0, growth = unmet.bold ? 20 / 24.0f : 0;
        EXPECT_NEAR(box.size.width, realBox.size.width + slant + growth, 0.1);
        EXPECT_NEAR(box.size.height, realBox.size.height + growth / 2, 0.1);
        EXPECT_NEAR(box.origin.y, realBox.origin.y - growth / 4, 0.05);
    }
}

TEST(FontTest, ContoursBecomePathsWithoutTheirAnchors) {
    FT_Vector points[] = {{0, 0}, {6, 0}, {6, 6}, {0, 3}, {7, 7}, {9, 9}, {9, 3}, {3, 3}, {3, 9}};
    constexpr char kOn = FT_CURVE_TAG_ON, kConic = FT_CURVE_TAG_CONIC, kCubic = FT_CURVE_TAG_CUBIC;
    char tags[] = {kOn, kConic, kOn, kOn, kOn, kOn, kCubic, kCubic, kOn};
    short contours[] = {3, 4, 8};  // the second is an anchor: stroked, it would be a dot
    FT_Outline outline = {3, 9, points, tags, contours, 0};
    const NSBezierPath path = pathOfOutline(outline);
    using Verb = NSBezierPath::Verb;
    EXPECT_EQ(path.verbs(), (std::vector{Verb::move, Verb::curve, Verb::line, Verb::line, Verb::close, Verb::move,
                                         Verb::curve, Verb::line, Verb::close}));
    const std::vector<NSBezierPath::Point> expected = {{0, 0}, {4, 0}, {6, 2}, {6, 6}, {0, 3}, {0, 0},
                                                       {9, 9}, {9, 3}, {3, 3}, {3, 9}, {9, 9}};
    EXPECT_EQ(path.points(), expected) << "controls two thirds of the way to that of the quadratic curve";
}

TEST(FontTest, APictureHasItsBorderForAnOutline) {
    const Ref<NSFont> font = fontNamed("Noto Color Emoji");
    NSBezierPath path;
    appendBezierPathWithGlyph(path, font->glyphForCharacter(U'\U0001F600'), *font);
    EXPECT_GT(path.currentPoint().x, 0);
    EXPECT_GT(path.controlPointBounds().size.height, 0.9f * 12);
    EXPECT_NEAR(path.controlPointBounds().size.width, path.currentPoint().x, 2);
    EXPECT_EQ(font->advancementForGlyph(NSControlGlyph), NSSize{});
}

// At one point per unit, the values in the file's tables.
TEST(FontTest, MetricsAreThoseOfTheFile) {
    const Ref<NSFont> font = fontNamed("NotoSansCJKkr-Bold", 1000);
    EXPECT_FLOAT_EQ(font->ascender(), 1160);
    EXPECT_FLOAT_EQ(font->descender(), -288);
    EXPECT_FLOAT_EQ(font->advancementForGlyph(font->glyphForCharacter(U'A')).width, 641);
}

TEST(FontTest, CoverageCountsWhatShapingCanShow) {
    const struct {
        const char* font;
        std::u16string text;
        bool covered;
        const char* reason;
    } cases[] = {
        {"Noto Sans", u"", true, "nothing is needed"},
        {"Noto Sans", u"Title", true, "letters"},
        {"Noto Sans", u"a\tb\n\u2028\u00AD\u200D\uFE0F", true, "what shows nothing needs no glyph"},
        {"Noto Sans", u"a\u2003b\u2011c", true, "shaping makes these of a space and a hyphen"},
        {"Noto Sans", u"日", false, "a letter of another script"},
        {"DejaVu Sans", u"\U0001D7D8", true, "a pair of surrogates"},
        {"DejaVu Sans", u"\xD835", true, "half a pair is shown as U+FFFD"},
        {"DejaVu Sans", u"\u2764", true, "a heart as text"},
        {"DejaVu Sans", u"1#", true, "digits begin keycaps but are none"},
        {"Noto Color Emoji", u"\u2764\uFE0E", false, "colour where text is asked for"},
    };
    for (const auto& [font, text, covered, reason] : cases) {
        EXPECT_EQ(fontNamed(font)->coversText(text), covered) << font << ": " << reason;
    }
}

TEST(FontTest, AMachineWithoutFontsStillLaysOut) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto laysOut = [] {
        const TemporaryFolder folder;
        writeText(folder.file("fonts.conf"), "<fontconfig><dir>" + folder.path().string() + "</dir><cachedir>" +
                                                 folder.path().string() + "</cachedir></fontconfig>");
        setenv("FONTCONFIG_FILE", folder.file("fonts.conf").c_str(), 1);
        setLogHook(writeToStandardError);
        const Ref<NSFont> font = NSFont::systemFontOfSize(10);
        NSBezierPath path;
        appendBezierPathWithGlyph(path, font->glyphForCharacter(U'A'), *font);
        return font->ascender() == 8 && font->descender() == -2 && !font->coversText(u"A") &&
               shape({u"AB", {0, 2}, font, 0, false, ""}).size() == 2 && path.verbs().size() == 1 &&
               font->fontName()->length() == 0 && !fontNamed("DejaVu Sans");
    };
    EXPECT_EXIT(std::exit(laysOut() ? 0 : 1), testing::ExitedWithCode(0), "No usable font is installed");
}

}  // namespace
}  // namespace qz
