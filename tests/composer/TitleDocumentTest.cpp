#include <QImage>

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

TEST_F(Document, movesToAnotherPaletteByName) {
    view->setSelectedRange({0, 3});
    toggle(big);
    const auto other = test::paletteWithGlobals({});
    const auto otherBig = test::addAnnotation(*other, "Big", {{QzFontSizeAttribute, number(30)}});
    document->replacePalette(other);
    EXPECT_TRUE(document->title()->annotation(otherBig, 0));
    EXPECT_EQ(palette->findAnnoKey("Big"_ns), otherBig);
    EXPECT_EQ(sizeAt(0), 30);
    EXPECT_FALSE(palette->findAnnoKey("Red"_ns));
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
