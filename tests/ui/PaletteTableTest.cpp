#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>

#include "QzAnno/platform/foundation/NSArray.h"
#include "platform/ui/TableWidget.h"
#include "tests/ui/Desk.h"

namespace qz {
namespace {

using testing::ElementsAre;

class PaletteTable : public test::Desk {
protected:
    PaletteTable() { manager->window()->orderFront({}); }
};

TEST_F(PaletteTable, showsTheHighestPriorityFirstAndTheGlobalAnnotationLast) {
    EXPECT_EQ(order(), "D C B A Default ");
    palette->setAnnoKey(keys[0], 4);
    EXPECT_EQ(order(), "A D C B Default ") << "follows the palette";
    palette->undoManager()->undo();
    EXPECT_EQ(order(), "D C B A Default ");
    EXPECT_FALSE(tableWidget()->model()->index(4, 0).data(Qt::CheckStateRole).isValid()) << "not drawn";
    const auto lone = test::paletteWithGlobals({});
    manager->setAnnotationPalette(lone);
    EXPECT_EQ(order(), "Default ");
    manager->setAnnotationPalette({});
    EXPECT_EQ(order(), "");
}

TEST_F(PaletteTable, tellsWhatTheSelectionCarries) {
    setTitle("abcd", {{keys[0], {0, 4}}, {keys[1], {0, 2}}, {keys[2], {0, 1}}});
    const auto states = [&] { return std::vector{stateOf(0), stateOf(1), stateOf(2), stateOf(3)}; };
    view->setSelectedRange({0, 2});
    EXPECT_THAT(states(), ElementsAre(Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked, Qt::Checked));
    view->setSelectedRange({2, 1});
    click(1, 1);
    view->setSelectedRange({2, 2});
    EXPECT_TRUE(table().haveMouseSelected()) << "the row stays while the sets stay the same";
    view->setSelectedRange({4, 0});
    EXPECT_FALSE(table().haveMouseSelected());
    EXPECT_EQ(namesOf(table().selectedAnnoKeys()), "A") << "at an insertion point the frame is on";
    EXPECT_EQ(stateOf(1), Qt::Checked) << "and what is used anywhere shows";
}

TEST_F(PaletteTable, switchesAnnotationsByClicks) {
    showDocument();
    setTitle("abcd", {{keys[2], {0, 1}}});
    view->setSelectedRange({0, 2});
    ASSERT_EQ(stateOf(1), Qt::PartiallyChecked);
    click(1, 0);
    EXPECT_EQ(coverage(), "C C   ") << "a mixed row is put on the whole selection";
    click(1, 0);
    EXPECT_EQ(coverage(), "    ");
    click(0, 0);
    click(3, 0);
    EXPECT_EQ(coverage(), "AD AD   ");
    click(4, 0);
    EXPECT_EQ(namesOf(table().selectedAnnoKeys()), "AD") << "the global row cannot be switched";
    tableWidget()->setCurrentIndex(tableWidget()->model()->index(2, 0));
    QTest::keyClick(tableWidget(), Qt::Key_Space);
    EXPECT_EQ(coverage(), "ABD ABD   ") << "by keyboard";
    for (int32_t row = 0; row <= 4; ++row) {
        table().toggleRow(row);
        table().toggleRow(row);
        EXPECT_EQ(coverage(), "ABD ABD   ") << "twice is not at all: " << row;
    }
}

TEST_F(PaletteTable, showsWhatTheSelectionCarriesAndThePaletteDoesNotHave) {
    showDocument();
    const auto loose = QzAnnoKey::keyWithName("Lost"_ns);
    setTitle("abcd", {{loose, {0, 2}}});
    view->setSelectedRange({0, 1});
    ASSERT_EQ(order(), "D C B A Default Lost ");
    const auto name = tableWidget()->model()->index(5, 1);
    EXPECT_TRUE(name.data(Qt::FontRole).value<QFont>().strikeOut());
    EXPECT_EQ(name.data(Qt::AccessibleTextRole), "Lost, not in the palette");
    EXPECT_FALSE(name.siblingAtRow(4).data(Qt::FontRole).value<QFont>().strikeOut());
    click(5, 1);
    EXPECT_FALSE(table().haveMouseSelected());
    table().deleteAnno({});
    tableWidget()->model()->setData(name, "Found", Qt::EditRole);
    EXPECT_EQ(order(), "D C B A Default Lost ") << "neither deleted nor renamed";
    click(5, 0);
    EXPECT_EQ(coverage(), " Lost   ");
    EXPECT_EQ(order(), "D C B A Default ") << "switched off for the selection";
    view->setSelectedRange({0, 2});
    EXPECT_EQ(stateOf(5), Qt::PartiallyChecked);
    click(5, 0);
    EXPECT_EQ(coverage(), "Lost Lost   ") << "and on";
}

TEST_F(PaletteTable, renamesAnyRowButTheGlobalOne) {
    auto* model = tableWidget()->model();
    model->setData(model->index(1, 1), "Lower Third", Qt::EditRole);
    EXPECT_EQ(keys[2]->name()->utf8(), "Lower Third");
    EXPECT_EQ(order(), "D Lower Third B A Default ");
    model->setData(model->index(4, 1), "Mine", Qt::EditRole);
    EXPECT_EQ(order(), "D Lower Third B A Default ");
    EXPECT_EQ(palette->lookupAnno({})->name()->utf8(), "GLOBALS");
    palette->undoManager()->undo();
    EXPECT_EQ(keys[2]->name()->utf8(), "C");
}

TEST_F(PaletteTable, designatesThePriorityToEdit) {
    click(1, 1);
    EXPECT_EQ(table().editPrio(), 3);
    EXPECT_TRUE(table().haveNonGlobalSelected());
    click(4, 1);
    EXPECT_EQ(table().editPrio(), 0);
    EXPECT_TRUE(table().haveMouseSelected());
    EXPECT_FALSE(table().haveNonGlobalSelected());
    tableWidget()->clearSelection();
    EXPECT_EQ(table().editPrio(), 5) << "one beyond the highest";
    table().deleteAnno({});
    EXPECT_EQ(order(), "D C B A Default ");
    table().editAnno({});
    EXPECT_EQ(manager->editor()->valueForKey("annoname")->description(), "Default");
}

TEST_F(PaletteTable, opensTheEditorByKeyOrDoubleClickInsteadOfEditingInPlace) {
    for (const int column : {0, 1, 2}) {
        tableWidget()->setCurrentIndex(tableWidget()->model()->index(2, column));
        QTest::keyClick(tableWidget(), Qt::Key_F2);
        EXPECT_TRUE(manager->editor()->isEditing()) << column;
        manager->editor()->close();
    }
    click(2, 1);
    QTest::mouseDClick(tableWidget()->viewport(), Qt::LeftButton, {}, centerOf(2, 1));
    EXPECT_EQ(manager->editor()->valueForKey("annoname")->description(), "B");
    EXPECT_EQ(tableWidget()->viewport()->findChild<QLineEdit*>(), nullptr);
}

TEST_F(PaletteTable, makesAndDeletesAnnotations) {
    auto* newButton = manager->window()->widget()->findChild<QAbstractButton*>("newButton");
    auto* deleteButton = manager->window()->widget()->findChild<QAbstractButton*>("deleteButton");
    newButton->click();
    EXPECT_EQ(order(), "NEW D C B A Default ");
    EXPECT_TRUE(manager->editor()->isEditing());
    manager->editor()->cancel({});
    EXPECT_FALSE(deleteButton->isEnabled());
    click(2, 1);
    EXPECT_TRUE(deleteButton->isEnabled());
    deleteButton->click();
    EXPECT_EQ(order(), "NEW D B A Default ");
    EXPECT_FALSE(deleteButton->isEnabled());
    EXPECT_FALSE(table().haveMouseSelected());
    palette->undoManager()->endEvent();
    palette->undoManager()->undo();
    EXPECT_EQ(order(), "NEW D C B A Default ");
}

TEST_F(PaletteTable, disablesItsMenuWhileTheEditorEdits) {
    const auto enabledItems = [&] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, centerOf(1, 1), {});
        QApplication::sendEvent(tableWidget()->viewport(), &event);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        std::string enabled;
        if (!menu) return std::string("no menu");
        for (const QAction* action : menu->actions())
            enabled += action->isEnabled() ? action->text().toStdString() + " " : "";
        menu->close();
        return enabled;
    };
    click(4, 1);
    EXPECT_EQ(enabledItems(), "New Edit… ") << "the global annotation cannot be deleted";
    click(1, 1);
    EXPECT_EQ(enabledItems(), "New Edit… Delete ");
    const auto menuTable =
        std::dynamic_pointer_cast<MenuContextTableView>(NSView::responderOfWidget(tableWidget())->shared_from_this());
    EXPECT_EQ(menuTable->menuRow(), 1);
    EXPECT_EQ(menuTable->menuColumn(), 1);
    manager->editor()->setAnno(palette->lookupAnno(keys[0]));
    EXPECT_EQ(enabledItems(), "");
    manager->editor()->close();
    const auto locked = QzAnnoPalette::init();
    manager->setAnnotationPalette(locked);
    EXPECT_EQ(enabledItems(), "") << "a locked palette";
}

/// Drags rows with the pointer from press to release.
class PaletteTableDrop : public PaletteTable {
protected:
    enum Where { above, on, below };
    ~PaletteTableDrop() override { TableWidget::dragLoop = loop_; }

    /// Whether the drop was allowed. `carried_` then holds the dragged data; `type` replaces it.
    bool drop(const std::vector<int>& rows, int atRow, Where where, const char* type = nullptr) {
        tableWidget()->clearSelection();
        for (int row : rows) click(row, 1, row == rows.front() ? Qt::NoModifier : Qt::ControlModifier);
        const QRect rect = tableWidget()->visualRect(tableWidget()->model()->index(atRow, 1));
        const int y = where == on ? rect.center().y() : where == above ? rect.top() + 1 : rect.bottom() - 1;
        const QPoint place(rect.center().x(), y);
        bool isAllowed = false;
        carried_ = "nothing";
        TableWidget::dragLoop = [&](QDrag& drag) {
            QMimeData* data = drag.mimeData();
            carried_ = NSPasteboard::pasteboardWithMimeData(*data)
                           ->propertyListForType(QzTaviAnnoPalettePboardType)
                           ->description();
            if (type) {
                data->clear();
                data->setData(type, "x");
            }
            QDragEnterEvent enter(place, Qt::CopyAction, data, Qt::LeftButton, {});
            QApplication::sendEvent(tableWidget()->viewport(), &enter);
            QDragMoveEvent move(place, Qt::CopyAction, data, Qt::LeftButton, {});
            QApplication::sendEvent(tableWidget()->viewport(), &move);
            QDropEvent fall(place, Qt::CopyAction, data, Qt::LeftButton, {});
            QApplication::sendEvent(tableWidget()->viewport(), &fall);
            isAllowed = move.isAccepted();
        };
        const QPoint start = centerOf(rows.back(), 1);
        QTest::mousePress(tableWidget()->viewport(), Qt::LeftButton, {}, start);
        for (const QPoint way : {QPoint(0, 1), QPoint(15, 1), QPoint(30, 1)}) {
            QMouseEvent move(QEvent::MouseMove, start + way, tableWidget()->viewport()->mapToGlobal(start + way),
                             Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(tableWidget()->viewport(), &move);
            // From here on the drag received the pointer, including its release.
            if (carried_ != "nothing") break;
        }
        return isAllowed;
    }
    std::string selectedNames() {
        std::string names;
        for (const QModelIndex& index : tableWidget()->selectionModel()->selectedRows(1))
            names += index.data().toString().toStdString();
        std::ranges::sort(names);
        return names;
    }

    const std::function<void(QDrag&)> loop_ = TableWidget::dragLoop;
    std::string carried_;
};

TEST_F(PaletteTableDrop, reordersThePalette) {
    struct Case {
        std::vector<int> rows;
        int atRow;
        Where where;
        const char* order;
        const char* reason;
    };
    const Case cases[] = {
        {{2, 3}, 1, above, "D B A C Default ", "rows 2 and 3 between 0 and 1"},
        {{2, 3}, 0, below, "D B A C Default ", "the same gap, seen from the row above it"},
        {{1, 3}, 0, above, "C A D B Default ", "to the top, in their order"},
        {{0, 1}, 3, below, "B A D C Default ", "down, just above the global annotation"},
        {{0, 2}, 2, above, "C D B A Default ", "a dragged row beside the gap is no anchor"},
        {{0}, 4, below, "D C B A Default ", "below the global annotation there is no place"},
        {{0, 1, 2, 3}, 2, above, "D C B A Default ", "all of them"},
        {{4}, 0, above, "D C B A Default ", "the global annotation stays"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason);
        for (int32_t i = 0; i < 4; ++i) palette->setAnnoKey(keys[static_cast<size_t>(i)], i + 1);
        ASSERT_EQ(order(), "D C B A Default ");
        std::string dragged;
        for (int row : c.rows) dragged += nameOf(row);
        std::ranges::sort(dragged);
        palette->undoManager()->endEvent();
        EXPECT_TRUE(drop(c.rows, c.atRow, c.where));
        std::string carried;
        for (int row : c.rows) carried += (carried.empty() ? "(" : ", ") + std::to_string(row);
        EXPECT_EQ(carried_, carried + ")");
        EXPECT_EQ(order(), c.order);
        EXPECT_EQ(selectedNames(), dragged) << "the same annotations stay selected";
        palette->undoManager()->endEvent();
        if (std::string_view(c.order) != "D C B A Default ") palette->undoManager()->undo();
        EXPECT_EQ(order(), "D C B A Default ") << "one step of undo";
    }
}

TEST_F(PaletteTableDrop, refusesRowsOnARowAndForeignData) {
    EXPECT_FALSE(drop({2}, 0, on));
    EXPECT_FALSE(drop({2}, 0, above, "text/plain"));
    EXPECT_EQ(order(), "D C B A Default ");
}

TEST_F(PaletteTableDrop, leavesRowsBelowThePaletteWhereTheyAre) {
    setTitle("a", {{QzAnnoKey::keyWithName("Lost"_ns), {0, 1}}});
    view->setSelectedRange({0, 1});
    drop({5}, 0, above);
    EXPECT_EQ(carried_, "nothing");
    EXPECT_FALSE(drop({0}, 5, below));
    EXPECT_EQ(order(), "D C B A Default Lost ");
}

TEST_F(PaletteTableDrop, survivesRowsThatAreNone) {
    const auto pasteboard = NSPasteboard::init();
    pasteboard->declareType(QzTaviAnnoPalettePboardType);
    pasteboard->setPropertyList(
        NSArray::arrayWithObjects({NSNumber::numberWithInt(99), "x"_ns, NSNumber::numberWithInt(-1)}),
        QzTaviAnnoPalettePboardType);
    auto view_ = std::dynamic_pointer_cast<NSTableView>(NSView::responderOfWidget(tableWidget())->shared_from_this());
    EXPECT_TRUE(table().acceptDrop(*view_, pasteboard, 1, NSTableViewDropOperation::above));
    EXPECT_EQ(order(), "D C B A Default ");
}

/// A table of texts that may be edited in place.
class Texts : public NSTableViewDataSource {
public:
    int32_t numberOfRowsInTableView(NSTableView&) override { return static_cast<int32_t>(rows.size()); }
    Ref<NSObject> objectValueForTableColumn(NSTableView&, NSTableColumn&, int32_t row) override {
        return NSString::stringWithUTF8String(rows[static_cast<size_t>(row)]);
    }
    void setObjectValue(NSTableView&, const Ref<NSObject>& value, NSTableColumn&, int32_t row) override {
        rows[static_cast<size_t>(row)] = value->description();
    }
    std::vector<std::string> rows = {"one", "two"};
};

/// Notes what a table tells its delegate of columns and of a selection that is being made.
struct TableNotes final : NSTableViewDelegate {
    void tableViewSelectionIsChanging(const NSNotification&) override { notes += "changing "; }
    void tableViewSelectionDidChange(const NSNotification&) override { notes += "changed "; }
    void mouseDownInHeaderOfTableColumn(NSTableView&, NSTableColumn& column) override { add("down", column); }
    void didClickTableColumn(NSTableView&, NSTableColumn& column) override { add("click", column); }
    void didDragTableColumn(NSTableView&, NSTableColumn& column) override { add("drag", column); }
    void tableViewColumnDidMove(const NSNotification& notification) override { add("move", notification); }
    void tableViewColumnDidResize(const NSNotification& notification) override { add("resize", notification); }
    void add(const char* what, const NSTableColumn& column) {
        notes += what + (" " + column.identifier()->utf8()) + " ";
    }
    void add(const char* what, const NSNotification& notification) {
        notes += std::string(what) + (notification.object.get() == table ? " " : " of another table ");
    }
    const NSTableView* table = nullptr;
    std::string notes;
};

TEST(TableView, tellsItsDelegateOfColumnsAndOfASelectionInTheMaking) {
    TableWidget widget;
    const Ref<NSTableView> view = NSTableView::tableViewWithWidget(&widget);
    struct Rows final : NSTableViewDataSource {
        int32_t numberOfRowsInTableView(NSTableView&) override { return 3; }
        Ref<NSObject> objectValueForTableColumn(NSTableView&, NSTableColumn&, int32_t) override { return "a"_ns; }
    } rows;
    TableNotes delegate;
    delegate.table = view.get();
    for (const auto& name : {"a"_ns, "b"_ns}) view->addTableColumn(NSTableColumn::initWithIdentifier(name));
    view->setDataSource(&rows);
    widget.resize(400, 200);
    widget.show();
    QHeaderView& header = *widget.horizontalHeader();
    header.setSectionsMovable(true);
    view->setDelegate(&delegate);
    const auto notesOf = [&](const auto& act) {
        delegate.notes.clear();
        act();
        return delegate.notes;
    };
    const QPoint first(header.sectionViewportPosition(0) + 20, 5), second(header.sectionViewportPosition(1) + 20, 5);
    EXPECT_EQ(notesOf([&] { QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, second); }), "down b click b ");
    EXPECT_EQ(notesOf([&] {
                  QTest::mousePress(header.viewport(), Qt::LeftButton, {}, first);
                  for (const int x : {40, 80}) QTest::mouseMove(header.viewport(), second + QPoint(x, 0));
                  QTest::mouseRelease(header.viewport(), Qt::LeftButton, {}, second + QPoint(80, 0));
              }),
              "down a move drag a ");
    EXPECT_EQ(notesOf([&] { header.moveSection(0, 1); }), "move ");
    EXPECT_EQ(notesOf([&] { header.resizeSection(0, 50); }), "resize ");
    const QPoint row = widget.visualRect(widget.model()->index(1, 0)).center();
    EXPECT_EQ(notesOf([&] { QTest::mouseClick(widget.viewport(), Qt::LeftButton, {}, row); }), "changing changed ");
    EXPECT_EQ(notesOf([&] { view->selectRow(2, false); }), "changed ");
    view->setDelegate(nullptr);
    view->setDataSource(nullptr);
}

TEST_F(PaletteTable, returnEndsTheEditingOfACell) {
    Texts texts;
    TableWidget widget;
    const auto tableView = MenuContextTableView::tableViewWithWidget(&widget);
    tableView->addTableColumn(NSTableColumn::initWithIdentifier("text"_ns));
    tableView->addTableColumn(NSTableColumn::initWithIdentifier("more"_ns));
    tableView->setDataSource(&texts);
    widget.show();
    const auto editedCell = [&] {
        auto* line = widget.viewport()->findChild<QLineEdit*>();
        return line && line->isVisible() ? line : nullptr;
    };
    ASSERT_TRUE(tableView->editColumn(0, 0));
    QTest::keyClicks(editedCell(), "first");
    QTest::keyClick(editedCell(), Qt::Key_Return);
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_THAT(texts.rows, ElementsAre("first", "two"));
    EXPECT_EQ(editedCell(), nullptr) << "and does not go on to the next row";
    ASSERT_TRUE(tableView->editColumn(0, 0));
    QTest::keyClick(editedCell(), Qt::Key_Tab);
    QApplication::processEvents();
    EXPECT_EQ(widget.currentIndex().column(), 1) << "Tab goes on to the next column";
    tableView->setDataSource(nullptr);
}

}  // namespace
}  // namespace qz
