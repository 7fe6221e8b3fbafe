#include <filesystem>
#include <utility>

#include <gmock/gmock.h>
#include <unistd.h>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/text/FontFace.h"
#include "platform/text/FontFallback.h"
#include "platform/text/FontFixing.h"
#include "tests/support/FontFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

std::string nameFound(FontLibrary& library, std::string_view asked) {
    const auto face = library.faceWithName(asked);
    return face ? face->installedFont().fontName : "none";
}

TEST(FontLibraryTest, FindsNamedInstancesByTheNamesThatTheFontGivesThem) {
    const auto library = FontLibrary::shared();
    const struct {
        const char *asked, *found, *reason;
    } cases[] = {
        {"Inter-ExtraBold", "Inter-ExtraBold", "PostScript name of the instance"},
        {"Inter Extra Bold", "Inter-ExtraBold", "full name"},
        {"Inter-Extra Bold", "Inter-ExtraBold", "family and style"},
        {"inter-thinitalic", "Inter-ThinItalic", "an instance on two axes"},
        {"Inter", "Inter-Regular", "the family: its regular instance, which is the font without variation"},
        {"Inter-Regular", "Inter-Regular", "the same by the name of the instance"},
        {"Inter Display-Bold", "InterDisplay-Bold", "family and style"},
        {"InterDisplay-ThinItalic", "InterDisplay-ThinItalic", "a font that gives instances no PostScript names"},
        {"Inter-Heavy", "none", "no such instance"},
    };
    for (const auto& [asked, found, reason] : cases) EXPECT_EQ(nameFound(*library, asked), found) << reason;
}

TEST(FontLibraryTest, KnowsWhatAWrongNameMayHaveMeant) {
    const struct {
        const char *name, *first, *reason;
    } cases[] = {
        {"DejaVu Sans-Heavy", "DejaVu Sans-Book", "a style that the family lacks"},
        {"DejaVuSansMono-Medium", "DejaVu Sans Mono-Book", "the longer of two families, written as one word"},
        {"Deja Vu Serif", "DejaVu Serif-Book", "a blank too many"},
        {"DejVu Serff-Bold", "DejaVu Serif-Book", "two letters"},
        {"Gone Grotesk", "none", "nothing like it"},
        {"", "none", "no name"},
    };
    for (const auto& [name, first, reason] : cases) {
        const auto names = FontLibrary::shared()->namesLike(name, 3);
        EXPECT_LE(names.size(), 3u);
        EXPECT_EQ(names.empty() ? "none" : names[0], first) << reason;
    }
}

// Outlines and advances come from two libraries, each of which must be given the position in the design space.
TEST(FontLibraryTest, InstancesHaveOutlinesAndAdvancesOfTheirOwn) {
    double advance = 0;
    float width = 0;
    for (const char* name : {"Inter-Thin", "Inter-Regular", "Inter-Bold", "Inter-Black"}) {
        const auto face = FontLibrary::shared()->faceWithName(name);
        ASSERT_TRUE(face) << name;
        const NSGlyph glyph = face->glyphForCharacter(U'H');
        EXPECT_GT(face->advanceOfGlyph(glyph), std::exchange(advance, face->advanceOfGlyph(glyph))) << name;
        const float inked = face->outlineOfGlyph(glyph)->controlPointBounds().size.width;
        EXPECT_GT(inked, std::exchange(width, inked)) << name;
    }
}

TEST(FontLibraryTest, FoldersServeTheLibraryTheyWereGivenTo) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.file("below"));
    writeText(folder.file("below/q.TTF"), quokka(fontFile("DejaVu Serif-Bold")));
    const auto library = FontLibrary::withDirectories({folder.path().string()});
    ASSERT_TRUE(library);
    const Ref<NSString> name = "Quokka Serif-Bold"_ns;
    const Ref<NSFont> font = NSFont::fontWithName(*name, 20, library);
    ASSERT_TRUE(font);
    EXPECT_EQ(font->fontName()->utf8(), "QuokkaSerif-Bold");
    EXPECT_EQ(font->fontWithTraits({.bold = {}, .italic = true})->fontWithSize(9)->fontLibrary(), library);
    EXPECT_TRUE(NSFont::fontWithName(*"DejaVu Sans"_ns, 20, library)) << "those of the machine serve as well";
    EXPECT_FALSE(NSFont::fontWithName(*name, 20));
    const auto unarchiver = NSUnarchiver::initForReadingWithData(NSArchiver::archivedDataWithRootObject(font));
    unarchiver->setContext(library);
    EXPECT_TRUE(areEqual(unarchiver->decodeObject(), font));
}

TEST(FontLibraryTest, FoldersComeBeforeTheMachine) {
    const TemporaryFolder folder;
    writeText(folder.file("same.ttf"), fontFile("DejaVu Sans"));
    writeText(folder.file("other.ttf"), quokka(fontFile("DejaVu Sans")));
    const auto library = FontLibrary::withDirectories({folder.path().string()});
    ASSERT_TRUE(library);
    EXPECT_EQ(library->faceWithName("DejaVu Sans")->installedFont().path, folder.file("same.ttf"));
    const Ref<NSFont> font = NSFont::fontWithName(*"Noto Sans"_ns, 20, library);
    const Ref<NSFont> arabic = fontForText(font, u"عنوان");
    EXPECT_TRUE(arabic->face().installedFont().isAdded) << arabic->description();
    const Ref<NSFont> japanese = fontForText(font, u"字幕");
    EXPECT_FALSE(japanese->face().installedFont().isAdded) << "they lack it";
}

TEST(FontLibraryTest, ProblemsOfFoldersAreNamed) {
    const TemporaryFolder folder;
    const std::string whole = quokka(fontFile("DejaVu Serif"));
    std::string blank = whole;
    const auto [offset, length] = tableOf(blank, "glyf");
    blank.replace(offset, length, length, '\xff');
    const struct {
        const char* file;
        std::string content;
        const char* what;  // null where nothing is wrong
    } cases[] = {
        {"good.ttf", whole, nullptr},
        {"README", "no font, and not called one", nullptr},
        {"text.otf", "this is no font", "cannot be read"},
        {"half.ttf", whole.substr(0, whole.size() / 2), "cannot be read"},
        {"blank.ttf", blank, "is damaged"},
        {"packed.woff2", "wOF2", "convert it"},
    };
    for (const auto& [file, content, what] : cases) {
        SCOPED_TRACE(file);
        const TemporaryFolder alone;
        writeText(alone.file(file), content);
        std::vector<FontProblem> problems;
        const LogCapture log;
        EXPECT_TRUE(FontLibrary::withDirectories({alone.path().string()}, &problems));
        std::erase_if(problems, [&](const FontProblem& p) { return p.path != alone.file(file); });
        ASSERT_EQ(problems.size(), what ? 1u : 0u);
        EXPECT_THAT(problems.empty() ? "" : problems[0].what, HasSubstr(what ? what : ""));
    }
    for (const std::string& wrong :
         {folder.file("missing"), FontLibrary::shared()->fontWithName("DejaVu Sans")->path}) {
        std::vector<FontProblem> problems;
        EXPECT_FALSE(FontLibrary::withDirectories({wrong}, &problems)) << wrong;
        ASSERT_EQ(problems.size(), 1u);
        EXPECT_EQ(problems[0].path, wrong);
    }
}

TEST(FontLibraryTest, AWholeFontServesWhereOneOfThatNameIsDamaged) {
    const TemporaryFolder folder;
    const std::string whole = fontFile("DejaVu Serif");
    writeText(folder.file("a.ttf"), whole);
    const auto library = FontLibrary::withDirectories({folder.path().string()});
    ASSERT_TRUE(library);
    // Listed while it was whole.
    writeText(folder.file("a.ttf"), "this is no font");
    const LogCapture log;
    const auto face = library->faceWithName("DejaVu Serif");
    ASSERT_TRUE(face);
    EXPECT_NE(face->installedFont().path, folder.file("a.ttf"));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("a.ttf: cannot be read as a font")));
}

TEST(FontLibraryTest, OtherFontsStandInForDamagedGlyphs) {
    const TemporaryFolder folder;
    std::string file = quokka(fontFile("DejaVu Sans"));
    // Letters come first in it; the rest is overwritten.
    const auto [offset, length] = tableOf(file, "glyf");
    file.replace(offset + length / 4, length * 3 / 4, length * 3 / 4, '\xff');
    writeText(folder.file("q.ttf"), file);
    const auto library = FontLibrary::withDirectories({folder.path().string()});
    const Ref<NSFont> font = NSFont::fontWithName(*"Quokka Sans"_ns, 20, library);
    ASSERT_TRUE(font);
    const LogCapture log;
    const auto stretches = fontsForText(font, u"Title \u2603");
    ASSERT_EQ(stretches.size(), 2u) << "a snowman that cannot be drawn";
    EXPECT_EQ(stretches[0].font, font);
    EXPECT_FALSE(stretches[1].font->isGlyphDamaged(stretches[1].font->glyphForCharacter(U'\u2603')));
    EXPECT_TRUE(font->isGlyphDamaged(font->glyphForCharacter(U'\u2603')));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("q.ttf: glyph"))) << "told once";
}

TEST(FontLibraryTest, ALogHookMayAskForFontsWhileADamagedOneIsReported) {
    const TemporaryFolder folder;
    writeText(folder.file("q.ttf"), quokka(fontFile("DejaVu Sans")));
    const auto library = FontLibrary::withDirectories({folder.path().string()});
    ASSERT_TRUE(library);
    writeText(folder.file("q.ttf"), "this is no font");
    const Ref<NSFont> font = NSFont::fontWithName(*"Noto Sans"_ns, 20, library);
    int reports = 0;
    setLogHook([&](std::string_view) {
        ++reports;
        EXPECT_TRUE(fontForText(font, u"عنوان")->coversText(u"عنوان"));
        EXPECT_TRUE(NSFont::systemFontOfSize(12, library)->coversText(u"Title"));
    });
    // A lock held while reporting would last for ever.
    alarm(30);
    EXPECT_TRUE(fontForText(font, u"عنوان")->coversText(u"عنوان")) << "the folder's font was to serve";
    alarm(0);
    setLogHook({});
    EXPECT_EQ(reports, 1);
}

}  // namespace
}  // namespace qz
