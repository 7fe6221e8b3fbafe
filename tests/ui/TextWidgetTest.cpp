#include <QAccessible>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QMenu>
#include <QMimeData>

#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/render/QzAnnoLayoutManager.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/text/CaretGeometry.h"
#include "tests/ui/Desk.h"

namespace qz {
namespace {

constexpr const char* kFamily = "\U0001F468\u200D\U0001F469\u200D\U0001F467";

/// A text view of 400 x 200 points, shown twice as large, with a layout manager that draws layers.
class TextWidget : public testing::Test {
protected:
    TextWidget() {
        NSApplication::sharedApplication();
        container->replaceLayoutManager(layoutManager);
        layoutManager->replaceTextStorage(NSTextStorage::init());
        view = NSTextView::initWithTextContainer(container);
        view->setUndoManager(undo);
        ObjectMap attributes;
        attributes.set(NSFontAttributeName, NSFont::fontWithName(*"DejaVu Sans"_ns, 40));
        view->setTypingAttributes(NSDictionary::dictionaryWithMap(std::move(attributes)));
        text = NSTextViewWidget::initWithTextView(view, &window);
        text->widget()->resize(800, 400);
        window.resize(800, 400);
        window.show();
        window.activateWindow();
        text->widget()->setFocus();
        QApplication::processEvents();
    }

    void type(const QString& characters) {
        for (const QChar c : characters) QTest::keyClick(widget(), c.toLatin1());
    }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(widget(), which, modifiers); }
    std::string string() const { return view->string()->utf8(); }
    QWidget* widget() const { return text->widget(); }
    /// Where the cluster of a character shows.
    QPoint at(uint32_t character, float part = 0.5f) const {
        for (const CaretLine& line : caretLines(*layoutManager, *container)) {
            for (const CaretCell& cell : line.cells) {
                if (!cell.characters.contains(character)) continue;
                const NSPoint point = text->pointInWidget(
                    {cell.left + (cell.right - cell.left) * part, line.rect.origin.y + line.rect.size.height / 2});
                return {static_cast<int>(point.x), static_cast<int>(point.y)};
            }
        }
        return {};
    }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(widget(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, widget()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(widget(), &move);
        QTest::mouseRelease(widget(), Qt::LeftButton, {}, to);
    }
    void compose(const QString& preedit, const QString& commit = {}) {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QApplication::sendEvent(widget(), &event);
    }
    /// How many pixels of the widget are nearly of the colour.
    int pixelsOf(QColor color) const {
        const QImage image = widget()->grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                count += std::abs(pixel.red() - color.red()) + std::abs(pixel.green() - color.green()) +
                             std::abs(pixel.blue() - color.blue()) <
                         60;
            }
        }
        return count;
    }

    test::LogCapture log;
    Ref<NSTextContainer> container = NSTextContainer::initWithContainerSize({400, 200});
    Ref<QzAnnoLayoutManager> layoutManager = QzAnnoLayoutManager::init();
    Ref<NSUndoManager> undo = NSUndoManager::init();
    QWidget window;
    Ref<NSTextView> view;
    Ref<NSTextViewWidget> text;
};

TEST_F(TextWidget, handsKeysToTheView) {
    type("Hello, world");
    key(Qt::Key_Return);
    type("two");
    EXPECT_EQ(string(), "Hello, world\ntwo");
    key(Qt::Key_Backspace, Qt::ControlModifier);
    key(Qt::Key_Home, Qt::ControlModifier);
    key(Qt::Key_Delete);
    EXPECT_EQ(string(), "ello, world\n");
    for (int i = 0; i < 3; ++i) key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(string(), "");
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(string(), "Hello, world\ntwo");
}

TEST_F(TextWidget, selectsInAnArabicLineAsThePointerGoes) {
    view->insertText("السلام عليكم"_ns);
    // From the right of the first letter leftwards over three letters.
    drag(at(0, 0.9f), at(2, 0.1f));
    EXPECT_EQ(view->selectedRange(), (Range{0, 3}));
    QTest::mouseClick(widget(), Qt::LeftButton, Qt::ShiftModifier, at(4, 0.1f));
    EXPECT_EQ(view->selectedRange(), (Range{0, 5}));
    QTest::mouseDClick(widget(), Qt::LeftButton, {}, at(8));
    EXPECT_EQ(view->selectedRange(), (Range{7, 5})) << "the second word";
    QTest::mouseClick(widget(), Qt::LeftButton, {}, at(8));
    EXPECT_EQ(view->selectedRange(), (Range{0, 12})) << "a third click selects the paragraph";
    key(Qt::Key_Left);
    EXPECT_EQ(view->selectedRange(), (Range{12, 0})) << "the end is at the left";
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(view->selectedRange(), (Range{11, 1}));
    // The selection shows over the first three letters, at the right.
    view->setSelectedRange({12, 0});
    const QImage before = widget()->grab().toImage();
    view->setSelectedRange({0, 3});
    const QImage after = widget()->grab().toImage();
    const int y = at(1).y() - 30;
    const auto changes = [&](int x) { return before.pixel(x, y) != after.pixel(x, y); };
    EXPECT_TRUE(changes(at(0, 0.9f).x()));
    EXPECT_TRUE(changes(at(2, 0.1f).x()));
    EXPECT_FALSE(changes(at(3, 0.8f).x()));
    EXPECT_FALSE(changes(at(0, 1.0f).x() + 4));
}

TEST_F(TextWidget, showsTheSelectionAboveAnyBoxAndTheGlyphsAboveIt) {
    view->insertText("III"_ns);
    view->textStorage()->addAttribute(NSForegroundColorAttributeName, test::rgba(1, 0, 0), {0, 3});
    for (const bool isActive : {true, false}) {
        if (!isActive) widget()->clearFocus();
        const QPalette palette = widget()->palette();
        const QColor highlight = palette.color(isActive ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
        for (const QColor& box : {QColor(Qt::white), QColor(Qt::black), highlight}) {
            SCOPED_TRACE(box.name().toStdString() + (isActive ? " active" : " inactive"));
            const auto color = test::rgba(float(box.redF()), float(box.greenF()), float(box.blueF()));
            view->textStorage()->addAttribute(QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::qzbbWithColor(color, 2),
                                              {0, 3});
            view->setSelectedRange({3, 0});
            view->didChangeText();
            const QImage before = widget()->grab().toImage();
            const int red = pixelsOf(Qt::red);
            view->setSelectedRange({0, 2});
            const QImage after = widget()->grab().toImage();
            int changed = 0;
            for (int x = 0; x < after.width(); ++x)
                changed += std::abs(qGray(before.pixel(x, at(0).y())) - qGray(after.pixel(x, at(0).y()))) > 25;
            EXPECT_GT(changed, 1) << "its border at least";
            EXPECT_NEAR(pixelsOf(Qt::red), red, red * 0.05) << "the glyphs stay as they are";
        }
    }
}

TEST_F(TextWidget, copiesAndPastesPlainText) {
    type("abc");
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "abc");
    key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(string(), "");
    auto* rich = new QMimeData;
    rich->setHtml("<b>bold</b>");
    rich->setText("one\r\ntwo\x07");
    QGuiApplication::clipboard()->setMimeData(rich);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(string(), "one\ntwo");
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "one\r\ntwo\x07") << "nothing selected, nothing copied";
}

TEST_F(TextWidget, composesWithAnInputMethod) {
    type("ab");
    key(Qt::Key_Left);
    compose("に");
    compose("にほん");
    EXPECT_EQ(string(), "aにほんb");
    EXPECT_EQ(view->markedRange(), (Range{1, 3}));
    compose("", "日本");
    EXPECT_EQ(string(), "a日本b");
    EXPECT_EQ(view->markedRange().length, 0u);
    EXPECT_EQ(widget()->inputMethodQuery(Qt::ImCursorPosition).toInt(), 3);
    EXPECT_EQ(widget()->inputMethodQuery(Qt::ImSurroundingText).toString(), "a日本b");
    const QRectF caret = widget()->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    EXPECT_NEAR(caret.left(), at(3, 0).x(), 2);
    compose("y");
    QTest::mouseClick(widget(), Qt::LeftButton, {}, at(0, 0.1f));
    EXPECT_EQ(string(), "a日本yb") << "a click keeps what is composed";
    EXPECT_EQ(view->selectedRange(), (Range{0, 0}));
}

TEST_F(TextWidget, takesCommandsFromMenusAndTheChain) {
    type("abc");
    EXPECT_TRUE(NSApplication::sharedApplication().sendAction("selectAll:", {}, {}));
    EXPECT_EQ(view->selectedRange(), (Range{0, 3}));
    EXPECT_TRUE(NSApplication::sharedApplication().sendAction("delete:", {}, {}));
    EXPECT_EQ(string(), "");
    EXPECT_FALSE(NSApplication::sharedApplication().sendAction("fly:", {}, {}));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {10, 10}, {});
    QApplication::sendEvent(widget(), &event);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->actions().size(), 5);
    menu->close();
}

TEST_F(TextWidget, canBeReadAloud) {
    type("abc");
    key(Qt::Key_Left, Qt::ShiftModifier);
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget());
    ASSERT_TRUE(accessible && accessible->textInterface());
    EXPECT_EQ(accessible->role(), QAccessible::EditableText);
    EXPECT_EQ(accessible->text(QAccessible::Value), "abc");
    EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty());
    int start = 0, end = 0;
    accessible->textInterface()->selection(0, &start, &end);
    EXPECT_EQ(start, 2);
    EXPECT_EQ(end, 3);
    const QRect second = accessible->textInterface()->characterRect(1);
    EXPECT_EQ(accessible->textInterface()->offsetAtPoint(second.center() - QPoint(2, 0)), 1);
}

}  // namespace
}  // namespace qz
