#include <QImage>
#include <QTemporaryDir>
#include <random>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno_AnnotatedTextFramework/ui/KeyRenaming.h"
#include "apps/qzanno-composer/ComposerWindow.h"
#include "apps/qzanno-composer/TitleDocument.h"
#include "tests/ui/Desk.h"

namespace qz::composer {
namespace {

using test::number;

/// A document of one title, "one two", on the panel's palette, in its window.
class Document : public testing::Test {
protected:
    Document() {
        big = test::addAnnotation(*palette, "Big", {{QzFontSizeAttribute, number(100)}});
        red = test::addAnnotation(*palette, "Red", {{NSForegroundColorAttributeName, test::rgba(1, 0, 0)}});
        document->setTitles({{{QzAnnoString::initWithString("one two"_ns), {}, {}}}});
        document->undoManager()->endEvent();
        document->undoManager()->removeAllActions();
        NSApplication::sharedApplication().setDelegate(document);
        manager->setAnnotationPalette(palette);
        window.show();
        window.activateWindow();
        window.textWidget()->setFocus();
        QApplication::processEvents();
    }
    ~Document() override {
        manager->editor()->close();
        manager->setAnnotationPalette({});
        NSApplication::sharedApplication().setDelegate({});
    }

    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.textWidget(), which, modifiers);
    }
    /// "Big 0-3, Red 4-7" as letters, a character each; "." where nothing holds.
    std::string coverage() const {
        std::string letters;
        for (uint32_t i = 0; i < document->title()->length(); ++i) {
            const bool isBig = document->title()->annotation(big, i);
            const bool isRed = document->title()->annotation(red, i);
            letters += isBig && isRed ? '*' : isBig ? 'B' : isRed ? 'R' : '.';
        }
        return letters;
    }
    float sizeAt(uint32_t index) const {
        return view->textStorage()->attributesAtIndex(index)->objectForKey<NSFont>(*NSFontAttributeName)->pointSize();
    }
    void toggle(const Ref<QzAnnoKey>& anno) {
        document->undoManager()->endEvent();
        manager->ptable()->toggleRow(palette->maxPriority() - palette->lookupPrio(anno));
        document->undoManager()->endEvent();
    }

    test::LogCapture log;
    Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    Ref<TitleDocument> document = TitleDocument::documentWithPalette(palette, {800, 450});
    Ref<NSTextView> view = document->textView();
    Ref<QzAnnoKey> big, red;
    Ref<QzAnnotationManager> manager = QzAnnotationManager::sharedAnnotationManager();
    ComposerWindow window{document};
};

TEST_F(Document, typesWithTheAnnotationsBeforeAndKeepsTheFrameOfAnEmptiedText) {
    view->setSelectedRange({0, 3});
    toggle(big);
    EXPECT_EQ(sizeAt(0), 100) << "formatted anew, whatever font the change brought";
    EXPECT_EQ(sizeAt(4), NSFont::systemFontSize());
    EXPECT_EQ(view->selectedRange(), (Range{0, 3}));
    view->setSelectedRange({3, 0});
    QTest::keyClicks(window.textWidget(), "!!");
    EXPECT_EQ(coverage(), "BBBBB....");
    document->toggleFrameAnno(red);
    EXPECT_EQ(coverage(), "*****RRRR");
    EXPECT_TRUE(document->title()->frame()->containsObject(*red));
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    EXPECT_EQ(document->title()->length(), 0u);
    QTest::keyClicks(window.textWidget(), "x");
    EXPECT_TRUE(document->title()->annotation(red, 0));
    QTest::keyClicks(window.textWidget(), "x");
    view->setSelectedRange({1, 1});
    toggle(big);
    ASSERT_EQ(coverage(), "*R");
    document->insertTitle();
    QTest::keyClicks(window.textWidget(), "y");
    EXPECT_EQ(coverage(), "R") << "a new title is framed as its neighbour";
    document->insertTitle();
    document->show(0);
    document->show(2);
    QTest::keyClicks(window.textWidget(), "z");
    EXPECT_EQ(coverage(), ".") << "one that was left empty begins anew";
    document->undoManager()->endEvent();
    while (document->title()->length() != 9 && document->undoManager()->undo()) continue;
    EXPECT_EQ(coverage(), "*****RRRR");
}

TEST_F(Document, answersForScreenAndFrame) {
    test::giveAttributes(*palette, palette->lookupAnno(big), {{QzBoundingBoxAttribute, "{{0.5, 0}, {0.5, 1}}"_ns}});
    manager->editor()->setAnno(palette->lookupAnno(big));
    EXPECT_EQ(manager->editor()->valueForKey("marginsl")->description(), "400");
    manager->editor()->close();
    EXPECT_TRUE(NSApplication::sharedApplication().sendAction("toggleFrameAnno:", {}, red));
    EXPECT_EQ(coverage(), "RRRRRRR");
}

/// The annotations of the titles by name, with a "?" for those missing from the palette, whose blanks may be "_".
std::string looks(const TitleDocument& document) {
    std::string result;
    for (const Title& title : document.titles()) {
        for (const QzAnnoString::Run& run : title.text->runs()) {
            std::set<std::string> names;
            for (const auto& key : run.keys->objects<QzAnnoKey>()) {
                std::string name = key->name()->utf8();
                if (!document.palette()->contains(key)) {
                    std::ranges::replace(name, ' ', '_');
                    name += "?";
                }
                names.insert(name);
            }
            result += std::to_string(run.range.location) + ":";
            for (const std::string& name : names) result += name + ",";
        }
        result += "\n";
    }
    return result;
}

TEST_F(Document, keepsItsNamesUnderAWrongPaletteAndHasThemBackUnderTheRightOne) {
    const auto file = [&] {
        TitleFile titles = document->file();
        titles.titles[0].start = titles.titles[0].end = 1;
        std::string error;
        const auto written = titlesAsFile("t.vtt", titles, palette, {1920, 1080}, error);
        return written && written->losses.empty() ? std::string(written->file->view()) : error;
    };
    const auto right = palette->pListData();
    view->setSelectedRange({0, 3});
    toggle(big);
    document->markTitlesSaved();
    document->markPaletteSaved();
    const std::string before = looks(*document), captions = file();
    EXPECT_THAT(captions, testing::HasSubstr("<c.Big>one</c> two"));

    const auto wrong = test::paletteWithGlobals({});
    document->replacePalette(wrong, "wrong.plist");
    EXPECT_EQ(looks(*document), "0:Big?,3:\n");
    EXPECT_EQ(sizeAt(0), NSFont::systemFontSize());
    EXPECT_FALSE(document->titlesAreEdited() || document->paletteIsEdited());
    EXPECT_EQ(file(), captions);
    QTest::keyClicks(window.textWidget(), "w");
    document->undoManager()->undo();
    EXPECT_EQ(looks(*document), "0:Big?,3:\n") << "what is typed and undone leaves the name alone";

    document->replacePalette(QzAnnoPalette::paletteFromPListData(*right), "right.plist");
    EXPECT_EQ(looks(*document), before);
    EXPECT_EQ(sizeAt(0), 100);
    EXPECT_FALSE(document->titlesAreEdited() || document->paletteIsEdited());
    EXPECT_EQ(file(), captions);

    // Or by undo, which restores the former annotations and continues with earlier steps.
    document->undoManager()->undo();
    EXPECT_EQ(document->paletteFile(), "wrong.plist");
    document->undoManager()->undo();
    EXPECT_EQ(looks(*document), before);
    EXPECT_EQ(palette->findAnnoKey("Big"_ns), big);
    EXPECT_FALSE(document->titlesAreEdited() || document->paletteIsEdited());
    document->undoManager()->undo();
    EXPECT_EQ(looks(*document), "0:\n");
}

TEST_F(Document, drawsTheLooksOfAFileUnderEveryPaletteAndWritesThemBackAsTheyCame) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("t.vtt").toStdString();
    const std::string captions = "WEBVTT\n\n00:00:01.000 --> 00:00:02.000\n<i>one</i> <c.Big.yellow>two</c>\n";
    std::string error;
    ASSERT_TRUE(
        writeFileAtomically(path, {reinterpret_cast<const uint8_t*>(captions.data()), captions.size()}, &error));
    const auto drawn = [&] {
        const Ref<NSDictionary> italic = view->textStorage()->attributesAtIndex(0);
        const Ref<NSDictionary> yellow = view->textStorage()->attributesAtIndex(5);
        return italic->objectForKey<NSNumber>(*QzItalicAttribute) &&
               yellow->objectForKey<NSColor>(*NSForegroundColorAttributeName)->redComponent() == 1;
    };
    document->markPaletteSaved();
    auto read = readTitleFile(path, palette, error);
    ASSERT_TRUE(read) << error;
    document->setTitles(std::move(*read));
    EXPECT_TRUE(drawn());
    EXPECT_FALSE(document->titlesAreEdited() || document->paletteIsEdited());
    EXPECT_FALSE(document->undoManager()->canUndo());
    EXPECT_EQ(titlesAsFile(path, document->file(), palette, {1920, 1080}, error)->file->view(), captions);

    document->replacePalette(test::paletteWithGlobals({}), "other.plist");
    EXPECT_TRUE(drawn());
    EXPECT_EQ(titlesAsFile(path, document->file(), palette, {1920, 1080}, error)->file->view(), captions);
    document->setTitles({{{QzAnnoString::initWithString("three"_ns), {}, {}}}});
    EXPECT_EQ(palette->maxPriority(), 0) << "what nobody made something of goes with its file";
    EXPECT_FALSE(document->paletteIsEdited());
}

TEST_F(Document, revivesNamesThatThePaletteGets) {
    document->setTitles(*readTitleFile(QZANNO_EXAMPLES "/first-title.vtt", palette, *std::make_unique<std::string>()));
    document->undoManager()->endEvent();
    const std::string before = looks(*document);
    EXPECT_THAT(before, testing::StartsWith("0:Lower_Third?,13:Lower_Third?,Role?,\n"));
    const auto rename = [&](const Ref<const QzAnno>& anno, const char* name) {
        replaceAnnoNamed(*palette, anno, NSString::stringWithUTF8String(name));
        document->undoManager()->endEvent();
    };
    rename(palette->createAnno("NEW"_ns), "Lower Third");
    EXPECT_THAT(looks(*document), testing::StartsWith("0:Lower Third,13:Lower Third,Role?,\n"));
    EXPECT_FALSE(document->titlesAreEdited());
    rename(palette->lookupAnno(palette->findAnnoKey("Lower Third"_ns)), "Bauchbinde");
    EXPECT_TRUE(document->titlesAreEdited()) << "the file has the former name";
    document->undoManager()->undo();
    document->undoManager()->undo();
    EXPECT_EQ(looks(*document), before);
    EXPECT_FALSE(document->titlesAreEdited());
    // A deleted annotation stays on its titles, for undo and for a palette that has it.
    document->toggleFrameAnno(red);
    palette->removeAnno(red);
    EXPECT_THAT(looks(*document), testing::StartsWith("0:Lower_Third?,Red?,"));
    document->undoManager()->undo();
    EXPECT_EQ(looks(*document), before);
}

/// Random edits of titles and palette: every step is undone exactly, and opening palettes in turn keeps the titles'
/// names.
TEST_F(Document, takesBackEveryStepWhateverPaletteIsOpened) {
    const std::vector<std::string> names = {"Big", "Red", "Lower Third", "Lower_Third", "X"};
    const auto paletteOf = [](const std::vector<std::string>& chosen) {
        const auto made = test::paletteWithGlobals({});
        for (const std::string& name : chosen) test::addAnnotation(*made, name.c_str(), {});
        return made;
    };
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto below = [&](size_t count) { return static_cast<uint32_t>(random() % count); };
        const auto chosen = [&] {
            std::vector<std::string> some;
            for (const std::string& name : names) {
                for (uint32_t i = below(3); i > 0; --i) some.push_back(name);
            }
            return some;
        };
        document->replacePalette(paletteOf(chosen()));
        document->setTitles({{{QzAnnoString::initWithString("one two"_ns), {}, {}},
                              {QzAnnoString::initWithString("three"_ns), {}, {}}}});
        document->undoManager()->removeAllActions();
        const auto state = [&] {
            std::string annotations;
            for (int32_t prio = 1; prio <= palette->maxPriority(); ++prio)
                annotations += palette->annoKeyAtPriority(prio)->name()->utf8() + ",";
            return looks(*document) + annotations;
        };
        std::vector<std::string> states = {state()};
        for (int step = 0; step < 12; ++step) {
            const auto key = palette->annoKeyAtPriority(1 + static_cast<int32_t>(below(4)));
            const auto name = NSString::stringWithUTF8String(names[below(names.size())]);
            switch (below(6)) {
                case 0:
                    document->replacePalette(paletteOf(chosen()));
                    break;
                case 1:
                    if (key) replaceAnnoNamed(*palette, palette->lookupAnno(key), name);
                    break;
                case 2:
                    palette->removeAnno(key);
                    break;
                case 3:
                    palette->replaceAnno(palette->createAnno(name));
                    break;
                default:
                    document->show(below(2));
                    view->setSelectedRange({below(4), below(2)});
                    if (key) toggle(key);
            }
            document->undoManager()->endEvent();
            if (state() != states.back()) states.push_back(state());
        }
        // Palettes without some names, or with other spellings, do not affect the palette that is reopened.
        const auto now = palette->pListData();
        const std::string before = looks(*document);
        document->replacePalette(paletteOf(chosen()));
        document->replacePalette(paletteOf(chosen()));
        document->replacePalette(QzAnnoPalette::paletteFromPListData(*now));
        ASSERT_EQ(looks(*document), before);
        for (int palettes = 0; palettes < 3; ++palettes) document->undoManager()->undo();
        while (states.size() > 1 && document->undoManager()->undo()) {
            if (state() == states.back()) continue;
            states.pop_back();
            if (state() != states.back()) FAIL() << "undo made\n" << state() << "\nof\n" << states.back();
        }
        EXPECT_EQ(states.size(), 1u);
    }
}

TEST_F(Document, showsTheInsertionPointOfAnEmptyTitleWhereTypingBegins) {
    test::giveAttributes(*palette, palette->lookupAnno({}),
                         {{QzBoundingBoxAttribute, "{{0.5, 0.5}, {0.25, 0.5}}"_ns},
                          {QzHorizontalAlignmentAttribute, test::integer(1)},
                          {QzVerticalAlignmentAttribute, test::integer(2)}});
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    const QRectF empty = window.textWidget()->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    QTest::keyClicks(window.textWidget(), "x");
    const QRectF typed = window.textWidget()->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    // Aligned right, the insertion point stays where it is while the text grows to the left of it.
    EXPECT_NEAR(empty.left(), typed.left(), 12);
    EXPECT_NEAR(empty.top(), typed.top(), 2);
    EXPECT_NEAR(empty.height(), typed.height(), 2);
}

TEST_F(Document, showsWhatItRenders) {
    // The window draws the title where the renderer does, at the window's scale.
    toggle(big);
    toggle(red);
    const Ref<NSBitmapImageRep> picture = document->picture();
    const QImage shown = window.textWidget()->grab().toImage();
    const double scale = shown.width() / 800.0;
    const double top = std::floor((shown.height() - 450 * scale) / 2);
    int inked = 0, agreeing = 0;
    for (int32_t y = 0; y < picture->pixelsHigh(); ++y) {
        for (int32_t x = 0; x < picture->pixelsWide(); ++x) {
            const uint8_t* pixel = picture->row(y) + 4 * x;
            if (pixel[3] != 255 || pixel[0] < 250) continue;
            ++inked;
            const QColor there =
                shown.pixelColor(static_cast<int>((x + 0.5) * scale), static_cast<int>(top + (y + 0.5) * scale));
            agreeing += there.red() > 200 && there.green() < 80;
        }
    }
    EXPECT_GT(inked, 1000);
    EXPECT_GT(agreeing, inked * 0.95);
}

}  // namespace
}  // namespace qz::composer
