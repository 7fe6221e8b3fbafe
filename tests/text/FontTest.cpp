#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <set>
#include <thread>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>

#include "platform/text/NSFont.h"
#include FT_FREETYPE_H
#include FT_BBOX_H
#include <gmock/gmock.h>

#include "platform/foundation/NSLog.h"
#include "platform/text/FontFace.h"
#include "platform/text/FontFallback.h"
#include "platform/text/Shaping.h"

namespace qz {
namespace {

namespace fs = std::filesystem;

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

TEST(FontTest, EveryInstalledFontIsFoundByItsPostScriptName) {
    FcPattern* const everything = FcPatternCreate();
    FcObjectSet* const objects = FcObjectSetBuild(FC_POSTSCRIPT_NAME, FC_FONTFORMAT, FC_FILE, FC_VARIABLE, nullptr);
    FcFontSet* const set = FcFontList(nullptr, everything, objects);
    ASSERT_GT(set->nfont, 20);
    const auto textOf = [](const FcPattern* font, const char* object) {
        FcChar8* text = nullptr;
        FcPatternGetString(font, object, 0, &text);
        return text ? std::string(reinterpret_cast<const char*>(text)) : std::string();
    };
    // Fontconfig makes up names for the instances of variable fonts.
    std::set<std::string> variable;
    for (int i = 0; i < set->nfont; ++i) {
        FcBool varies = FcFalse;
        FcPatternGetBool(set->fonts[i], FC_VARIABLE, 0, &varies);
        if (varies) variable.insert(textOf(set->fonts[i], FC_FILE));
    }
    for (int i = 0; i < set->nfont; ++i) {
        if (textOf(set->fonts[i], FC_FONTFORMAT) != "TrueType") continue;
        if (variable.contains(textOf(set->fonts[i], FC_FILE))) continue;
        const std::string postScriptName = textOf(set->fonts[i], FC_POSTSCRIPT_NAME);
        EXPECT_EQ(nameFound(postScriptName), postScriptName);
    }
    FcFontSetDestroy(set);
    FcObjectSetDestroy(objects);
    FcPatternDestroy(everything);
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

// A font as FreeType alone sees it.
struct PlainFace {
    explicit PlainFace(const Ref<NSFont>& font) {
        const InstalledFont& installed = font->face().installedFont();
        FT_Init_FreeType(&library);
        FT_New_Face(library, installed.path.c_str(), installed.index, &face);
    }
    ~PlainFace() { FT_Done_FreeType(library); }

    float unscaledAdvance() const { return static_cast<float>(face->glyph->advance.x); }

    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

const char* const kFontsOfAllKinds[] = {"DejaVuSans", "DejaVuSerif-BoldItalic", "NotoSansDevanagari-Regular",
                                        "NotoSansCJKkr-Bold", "NotoSerifCJKjp-Regular"};

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
        // What is synthesised breaks no line elsewhere: a heavier or slanted outline at the same advance.
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

TEST(FontTest, MetricsAreThoseOfTheFont) {
    for (const char* name : kFontsOfAllKinds) {
        const Ref<NSFont> font = fontNamed(name, 50);
        ASSERT_TRUE(font) << name;
        const PlainFace plain(font);
        const float scale = 50.0f / static_cast<float>(plain.face->units_per_EM);
        EXPECT_NEAR(font->ascender(), scale * plain.face->ascender, 1e-3) << name;
        EXPECT_NEAR(font->descender(), scale * plain.face->descender, 1e-3) << name;
        EXPECT_NEAR(font->ascender() - font->descender() + font->leading(), scale * plain.face->height, 1e-3) << name;
        EXPECT_LT(font->descender(), 0) << name;

        const NSGlyph glyph = font->glyphForCharacter(U'A');
        EXPECT_EQ(glyph, FT_Get_Char_Index(plain.face, 'A')) << name;
        FT_Load_Glyph(plain.face, glyph, FT_LOAD_NO_SCALE);
        EXPECT_NEAR(font->advancementForGlyph(glyph).width, scale * plain.unscaledAdvance(), 1e-3) << name;
    }
    EXPECT_EQ(fontNamed("DejaVu Sans")->advancementForGlyph(NSControlGlyph), NSSize{});
}

struct Box {
    double minX = 1e30, minY = 1e30, maxX = -1e30, maxY = -1e30;
    void add(double x, double y) {
        minX = std::min(minX, x), maxX = std::max(maxX, x);
        minY = std::min(minY, y), maxY = std::max(maxY, y);
    }
};

// The box of the curves themselves, by walking along them in many steps.
Box inkBox(const NSBezierPath& path) {
    Box box;
    NSBezierPath::Point last = {0, 0};
    const NSBezierPath::Point* point = path.points().data();
    for (size_t i = 0; i < path.verbs().size(); ++i) {
        const NSBezierPath::Verb verb = path.verbs()[i];
        // The move to the next glyph draws nothing.
        if (verb == NSBezierPath::Verb::move && i + 1 == path.verbs().size()) break;
        if (verb == NSBezierPath::Verb::close) continue;
        if (verb == NSBezierPath::Verb::curve) {
            for (int step = 0; step <= 256; ++step) {
                const double t = step / 256.0, s = 1 - t;
                const auto at = [&](double a, double b, double c, double d) {
                    return s * s * s * a + 3 * s * s * t * b + 3 * s * t * t * c + t * t * t * d;
                };
                box.add(at(last.x, point[0].x, point[1].x, point[2].x), at(last.y, point[0].y, point[1].y, point[2].y));
            }
            point += 2;
        }
        last = *point++;
        box.add(last.x, last.y);
    }
    return box;
}

// Some fonts mark an anchor by a contour of one point. It is no ink: stroked, it would be a dot.
void dropAnchors(FT_Outline& outline) {
    short points = 0, contours = 0, begin = 0;
    for (int i = 0; i < outline.n_contours; ++i) {
        const auto end = static_cast<short>(outline.contours[i] + 1);
        const bool isAnchor = end - begin == 1;
        for (; begin < end; ++begin) {
            if (isAnchor) continue;
            outline.points[points] = outline.points[begin];
            outline.tags[points++] = outline.tags[begin];
        }
        if (!isAnchor) outline.contours[contours++] = static_cast<short>(points - 1);
    }
    outline.n_points = points;
    outline.n_contours = contours;
}

bool hasDot(const NSBezierPath& path) {
    constexpr NSBezierPath::Verb kDot[] = {NSBezierPath::Verb::move, NSBezierPath::Verb::close};
    return std::search(path.verbs().begin(), path.verbs().end(), std::begin(kDot), std::end(kDot)) !=
           path.verbs().end();
}

TEST(FontTest, OutlinesHaveTheShapeThatFreeTypeReads) {
    for (const char* name : kFontsOfAllKinds) {
        const Ref<NSFont> font = fontNamed(name, 100);
        const PlainFace plain(font);
        const double scale = 100.0 / plain.face->units_per_EM;
        int outlines = 0;
        for (NSGlyph glyph = 0; glyph < 400; ++glyph) {
            FT_Load_Glyph(plain.face, glyph, FT_LOAD_NO_SCALE);
            NSBezierPath path;
            path.moveToPoint({1000, 2000});
            const size_t verbsBefore = path.verbs().size();
            appendBezierPathWithGlyph(path, glyph, *font);
            // Whatever it shows, the next glyph begins one advance further.
            EXPECT_NEAR(path.currentPoint().x, 1000 + scale * plain.unscaledAdvance(), 1e-6);
            EXPECT_EQ(path.currentPoint().y, 2000);
            dropAnchors(plain.face->glyph->outline);
            if (path.verbs().size() <= verbsBefore + 1) {
                EXPECT_EQ(plain.face->glyph->outline.n_contours, 0) << name << " " << glyph;
                continue;
            }
            FT_BBox box;
            FT_Outline_Get_BBox(&plain.face->glyph->outline, &box);
            NSBezierPath alone;
            appendBezierPathWithGlyph(alone, glyph, *font);
            const Box ink = inkBox(alone);
            EXPECT_FALSE(hasDot(alone)) << name << " " << glyph;
            // FreeType rounds its box to font units.
            EXPECT_NEAR(ink.minX, scale * static_cast<double>(box.xMin), 1.1 * scale) << name << " " << glyph;
            EXPECT_NEAR(ink.minY, scale * static_cast<double>(box.yMin), 1.1 * scale) << name << " " << glyph;
            EXPECT_NEAR(ink.maxX, scale * static_cast<double>(box.xMax), 1.1 * scale) << name << " " << glyph;
            EXPECT_NEAR(ink.maxY, scale * static_cast<double>(box.yMax), 1.1 * scale) << name << " " << glyph;
            ++outlines;
        }
        EXPECT_GT(outlines, 100) << name;
    }
}

TEST(FontTest, APictureHasItsBorderForAnOutline) {
    NSBezierPath picture;
    appendBezierPathWithGlyph(picture, fontNamed("Noto Color Emoji")->glyphForCharacter(U'\U0001F600'),
                              *fontNamed("Noto Color Emoji"));
    EXPECT_GT(picture.currentPoint().x, 0);
    const NSRect face = picture.controlPointBounds();
    EXPECT_GT(face.size.height, 0.9f * 12);
    EXPECT_NEAR(face.size.width, picture.currentPoint().x, 2);
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

TEST(FontTest, ThreadsShareFaces) {
    const auto work = [](size_t* points) {
        for (int round = 0; round < 3; ++round) {
            for (const char* name : kFontsOfAllKinds) {
                const Ref<NSFont> font = fontNamed(name, 30);
                NSBezierPath path;
                for (NSGlyph glyph = 0; glyph < 200; ++glyph) appendBezierPathWithGlyph(path, glyph, *font);
                const std::vector<ShapedGlyph> glyphs = shape({u"Affinity AVATAR", {0, 15}, font, 0, false, "en"});
                const Ref<NSFont> fallback = fontForText(font, u"\U0001F600");
                *points += path.points().size() + glyphs.size() + fallback->fontName()->length();
            }
        }
    };
    size_t points[4] = {};
    std::vector<std::thread> threads;
    for (size_t& count : points) threads.emplace_back(work, &count);
    for (std::thread& thread : threads) thread.join();
    EXPECT_GT(points[0], 1000u);
    EXPECT_THAT(points, testing::Each(points[0]));
}

// Runs in a process of its own, whose only fonts are those of a folder.
class LonelyFontTest : public testing::Test {
protected:
    LonelyFontTest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        // The process for the death test comes by here as well; it must not build another folder.
        if (const char* given = std::getenv("QZ_LONELY_FONTS")) {
            folder_ = given;
            return;
        }
        std::string pattern = (fs::temp_directory_path() / "qz-fonts-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        isOwner_ = true;
        fs::create_directory(folder_ / "fonts");
        std::ofstream(folder_ / "fonts.conf")
            << "<fontconfig><dir>" << (folder_ / "fonts").string() << "</dir><cachedir>" << (folder_ / "cache").string()
            << "</cachedir></fontconfig>";
        setenv("QZ_LONELY_FONTS", folder_.c_str(), 1);
    }
    ~LonelyFontTest() override {
        if (!isOwner_) return;
        unsetenv("QZ_LONELY_FONTS");
        fs::remove_all(folder_);
    }
    void useOnlyThisFolder() const { setenv("FONTCONFIG_FILE", (folder_ / "fonts.conf").c_str(), 1); }

    fs::path folder_;
    bool isOwner_ = false;
};

bool laysOutWithoutGlyphs(const Ref<NSFont>& font) {
    NSBezierPath path;
    appendBezierPathWithGlyph(path, font->glyphForCharacter(U'A'), *font);
    const auto glyphs = shape({u"AB", {0, 2}, font, 0, false, ""});
    return font->ascender() == 8 && font->descender() == -2 && !font->coversText(u"A") && glyphs.size() == 2 &&
           path.verbs().size() == 1 && font->fontName()->length() == 0;
}

TEST_F(LonelyFontTest, AMachineWithoutFontsStillLaysOut) {
    const auto check = [this] {
        setLogHook(writeToStandardError);
        useOnlyThisFolder();
        std::exit(laysOutWithoutGlyphs(NSFont::systemFontOfSize(10)) && !fontNamed("DejaVu Sans") ? 0 : 1);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "No usable font is installed");
}

TEST_F(LonelyFontTest, ADamagedFileCountsAsNotInstalled) {
    // Not in the process for the death test, where a look at the machine's fonts would come before those of the folder.
    if (isOwner_) fs::copy_file(fontNamed("DejaVu Sans")->face().installedFont().path, folder_ / "fonts" / "font.ttf");
    const auto check = [this] {
        useOnlyThisFolder();
        int lines = 0;
        setLogHook([&lines](std::string_view line) { lines += line.find("font.ttf") != std::string_view::npos; });
        // Listed while it was whole.
        if (fontNamed("No Such Font")) std::exit(2);
        std::ofstream(folder_ / "fonts" / "font.ttf") << "this is no font";
        if (fontNamed("DejaVu Sans") || fontNamed("DejaVuSans")) std::exit(3);
        if (!laysOutWithoutGlyphs(NSFont::systemFontOfSize(10))) std::exit(4);
        std::exit(lines == 1 ? 0 : 5);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qz
