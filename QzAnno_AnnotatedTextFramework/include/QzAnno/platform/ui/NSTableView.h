#pragma once

#include <cstdint>
#include <vector>

#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/ui/NSCell.h"
#include "QzAnno/platform/ui/NSMenu.h"
#include "QzAnno/platform/ui/NSPasteboard.h"
#include "QzAnno/platform/ui/NSView.h"

class QTableView;

namespace qz {

class NSTableView;

/// The name in what `NSTableViewDelegate::tableViewSelectionDidChange` gets. The notification centre does not post it.
inline const Ref<NSString> NSTableViewSelectionDidChangeNotification = "NSTableViewSelectionDidChangeNotification"_ns;
/// The name in what `NSTableView::textDidEndEditing` gets. The notification centre does not post it.
inline const Ref<NSString> NSTextDidEndEditingNotification = "NSTextDidEndEditingNotification"_ns;
/// Key of the user info of `NSTextDidEndEditingNotification`: a number of `NSTextMovement`.
inline const Ref<NSString> NSTextMovementKey = "NSTextMovement"_ns;
/// What has ended the editing of a text.
enum NSTextMovement : int32_t {
    NSIllegalTextMovement = 0,  ///< none of the keys below
    NSReturnTextMovement = 16,  ///< Return
    NSTabTextMovement = 17,     ///< Tab
    NSBacktabTextMovement = 18  ///< Shift and Tab
};

/// What a drop is about: a row itself, or the place above it, which for the number of rows is that below the last row.
enum class NSTableViewDropOperation : int32_t { on = 0, above = 1 };
/// The values of the platform's drag operations that a table answers with.
enum NSDragOperation : uint32_t { NSDragOperationNone = 0, NSDragOperationCopy = 1 };

/// A column of a table: what its data source knows it by, the head, and the cell that shows all its rows.
class NSTableColumn final : public NSObject {
public:
    /// With a text cell. The identifier must not be none, and stands for a title that is none.
    static Ref<NSTableColumn> initWithIdentifier(const Ref<NSString>& identifier, const Ref<NSString>& title = {});

    /// What tells the columns of a table apart; never none.
    const Ref<NSString>& identifier() const { return identifier_; }
    /// What stands above the rows, and what reading programs say of its buttons; never none.
    const Ref<NSString>& title() const { return title_; }
    /// Never none. A text is edited, a button clicked.
    ///@{
    const Ref<NSCell>& dataCell() const { return dataCell_; }
    void setDataCell(const Ref<NSCell>& cell) { dataCell_ = cell; }
    ///@}

    std::string className() const override { return "NSTableColumn"; }

private:
    Ref<NSString> identifier_;
    Ref<NSString> title_;
    Ref<NSCell> dataCell_;
};

/// Where a table gets its rows from, and hands changes to. Rows count from 0 at the top.
class NSTableViewDataSource {
public:
    virtual ~NSTableViewDataSource() = default;
    /// Asked when the rows are reloaded. Less than 0 counts as 0.
    virtual int32_t numberOfRowsInTableView(NSTableView& tableView) = 0;
    /// The value of a cell, asked for whenever the cell is drawn or read. None shows nothing, and a button off.
    virtual Ref<NSObject> objectValueForTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) = 0;
    /// The user has changed a cell: to a string, the text that was typed, or to a number, the new state of a button, 0
    /// or 1. The table shows it when the data source says so, too.
    virtual void setObjectValue(NSTableView& /*tableView*/, const Ref<NSObject>& /*value*/, NSTableColumn& /*column*/,
                                int32_t /*row*/) {}

    /// Puts dragged rows, given from top to bottom, on the pasteboard; false stops the drag.
    virtual bool writeRows(NSTableView& /*tableView*/, const std::vector<int32_t>& /*rows*/,
                           const Ref<NSPasteboard>& /*toPasteboard*/) {
        return false;
    }
    /// A value of `NSDragOperation`: none refuses the drop. May move it with `setDropRow`.
    virtual uint32_t validateDrop(NSTableView& /*tableView*/, const Ref<NSPasteboard>& /*pasteboard*/,
                                  int32_t /*proposedRow*/, NSTableViewDropOperation /*proposedDropOperation*/) {
        return NSDragOperationNone;
    }
    /// Takes a drop at the place that `validateDrop` has allowed; false when it cannot. The pasteboard holds what the
    /// drag brings along.
    virtual bool acceptDrop(NSTableView& /*tableView*/, const Ref<NSPasteboard>& /*pasteboard*/, int32_t /*row*/,
                            NSTableViewDropOperation /*dropOperation*/) {
        return false;
    }
};

/// Whom a table asks how it should behave.
class NSTableViewDelegate {
public:
    virtual ~NSTableViewDelegate() = default;
    /// The cell has the row's value, and is about to be drawn or read. As one cell serves all rows, what is changed in
    /// it for one must be set for each.
    virtual void willDisplayCell(NSTableView& /*tableView*/, NSCell& /*cell*/, NSTableColumn& /*forColumn*/,
                                 int32_t /*row*/) {}
    /// Asked before a text is edited, whether the user or the program wants to.
    virtual bool shouldEditTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/, int32_t /*row*/) {
        return true;
    }
    /// Asked before the pointer or a key changes the selection; `selectRow` and `deselectAll` do not ask.
    virtual bool selectionShouldChangeInTableView(NSTableView& /*tableView*/) { return true; }
    /// Never asked: rows can be selected, and columns cannot.
    virtual bool shouldSelectTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) { return true; }
    /// The selection has changed, whoever has changed it; rows that go take theirs along. The notification's object is
    /// the table view.
    virtual void tableViewSelectionDidChange(const NSNotification& /*notification*/) {}
    /// Never called: a table tells of a selection that has changed, and nothing of its columns.
    ///@{
    virtual void tableViewSelectionIsChanging(const NSNotification& /*notification*/) {}
    virtual void didClickTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void mouseDownInHeaderOfTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void didDragTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void tableViewColumnDidMove(const NSNotification& /*notification*/) {}
    virtual void tableViewColumnDidResize(const NSNotification& /*notification*/) {}
    ///@}
};

/// A table whose contents come from its data source and whose looks from the cells of its columns.
///
/// Neither data source nor delegate is owned; whoever is one clears itself before it dies.
class NSTableView : public NSView {
public:
    /// On a widget that lies in a window: a `TableWidget` of an interface file, since another one stays empty.
    static Ref<NSTableView> tableViewWithWidget(QTableView* widget);
    ~NSTableView() override;

    /// At the right; must not be none.
    void addTableColumn(const Ref<NSTableColumn>& column);
    /// From left to right.
    const std::vector<Ref<NSTableColumn>>& tableColumns() const;
    /// The first of that identifier; none when there is none.
    Ref<NSTableColumn> tableColumnWithIdentifier(const NSString& identifier) const;
    /// Not owned. Setting it reloads the rows; without one there are none.
    ///@{
    void setDataSource(NSTableViewDataSource* dataSource);
    NSTableViewDataSource* dataSource() const;
    ///@}
    /// Not owned; may be none.
    ///@{
    void setDelegate(NSTableViewDelegate* delegate);
    NSTableViewDelegate* delegate() const;
    ///@}

    /// Takes the rows anew from the data source; the selection keeps its row numbers.
    void reloadData();
    /// As the data source said when the rows were last reloaded.
    int32_t numberOfRows() const;
    /// The selected row, the topmost of several; -1 when there is none.
    int32_t selectedRow() const;
    /// From top to bottom.
    std::vector<int32_t> selectedRows() const;
    /// Beside the selected rows, or instead of them. Does nothing outside the rows.
    void selectRow(int32_t row, bool byExtendingSelection);
    /// The sender does not matter.
    void deselectAll(const Ref<NSObject>& sender);

    /// Drops of this type are offered to the data source.
    void registerForDraggedType(const Ref<NSString>& type);
    /// Moves the place of a drop that is being validated.
    void setDropRow(int32_t row, NSTableViewDropOperation dropOperation);

    /// The context menu, unless a derived class has another; none at the start.
    void setMenu(const Ref<NSMenu>& menu);
    /// The context menu for a click (or the key) at a place of the rows' area, in points; none opens none.
    virtual Ref<NSMenu> menuForEvent(int x, int y);
    /// The row (column) at that place; -1 where there is none.
    ///@{
    int32_t rowAtPoint(int x, int y) const;
    int32_t columnAtPoint(int x, int y) const;
    ///@}

    /// Begins to edit a cell when the delegate allows it. False when not, for a button, and outside the table.
    bool editColumn(int32_t column, int32_t row);
    /// Called when the editing of a cell has ended; Return goes on to the next row, Tab to the next column.
    virtual void textDidEndEditing(const NSNotification& notification);

    std::string className() const override { return "NSTableView"; }

protected:
    /// As `tableViewWithWidget`.
    explicit NSTableView(QTableView* widget);

private:
    friend class TableWidget;
    friend class TableModel;
    class State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
