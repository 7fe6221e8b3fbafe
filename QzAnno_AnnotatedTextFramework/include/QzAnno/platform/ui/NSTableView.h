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

/// The name of the notification that `NSTableViewDelegate::tableViewSelectionDidChange` receives. It is not posted to
/// the notification centre.
inline const Ref<NSString> NSTableViewSelectionDidChangeNotification = "NSTableViewSelectionDidChangeNotification"_ns;
/// The names of the notifications that the operations of `NSTableViewDelegate` with these names receive. They are not
/// posted to the notification centre.
///@{
inline const Ref<NSString> NSTableViewSelectionIsChangingNotification = "NSTableViewSelectionIsChangingNotification"_ns;
inline const Ref<NSString> NSTableViewColumnDidMoveNotification = "NSTableViewColumnDidMoveNotification"_ns;
inline const Ref<NSString> NSTableViewColumnDidResizeNotification = "NSTableViewColumnDidResizeNotification"_ns;
///@}
/// The name of the notification that `NSTableView::textDidEndEditing` receives. It is not posted to the notification
/// centre.
inline const Ref<NSString> NSTextDidEndEditingNotification = "NSTextDidEndEditingNotification"_ns;
/// Key in the user info of `NSTextDidEndEditingNotification` for a number of `NSTextMovement`.
inline const Ref<NSString> NSTextMovementKey = "NSTextMovement"_ns;
/// How the editing of a text ended.
enum NSTextMovement : int32_t {
    NSIllegalTextMovement = 0,  ///< not by one of the keys below
    NSReturnTextMovement = 16,  ///< Return
    NSTabTextMovement = 17,     ///< Tab
    NSBacktabTextMovement = 18  ///< Shift-Tab
};

/// Whether a drop lands on a row or above it. Above the number of rows means below the last row.
enum class NSTableViewDropOperation : int32_t { on = 0, above = 1 };
/// The platform's drag operations that a table may return.
enum NSDragOperation : uint32_t { NSDragOperationNone = 0, NSDragOperationCopy = 1 };

/// A table column: its identifier, its title, and the cell that shows all its rows.
class NSTableColumn final : public NSObject {
public:
    /// Has a text cell. The identifier must not be null and replaces a null title.
    static Ref<NSTableColumn> initWithIdentifier(const Ref<NSString>& identifier, const Ref<NSString>& title = {});

    /// Identifies the column in its table; never null.
    const Ref<NSString>& identifier() const { return identifier_; }
    /// The header, which screen readers also say for its buttons; never null.
    const Ref<NSString>& title() const { return title_; }
    /// Never null. A text cell can be edited, a button clicked.
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

/// Supplies a table's rows and receives its changes. Rows count from 0 at the top.
class NSTableViewDataSource {
public:
    virtual ~NSTableViewDataSource() = default;
    /// Called when the rows are reloaded. A negative number counts as 0.
    virtual int32_t numberOfRowsInTableView(NSTableView& tableView) = 0;
    /// Returns the value of a cell whenever it is drawn or read. Null shows an empty text or a button that is off.
    virtual Ref<NSObject> objectValueForTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) = 0;
    /// Called when the user has changed a cell: the value is the typed text as a string, or the new state of a button
    /// as a number, 0 or 1. The table shows it only once the data source returns it.
    virtual void setObjectValue(NSTableView& /*tableView*/, const Ref<NSObject>& /*value*/, NSTableColumn& /*column*/,
                                int32_t /*row*/) {}

    /// Puts the dragged rows, given from top to bottom, on the pasteboard; false cancels the drag.
    virtual bool writeRows(NSTableView& /*tableView*/, const std::vector<int32_t>& /*rows*/,
                           const Ref<NSPasteboard>& /*toPasteboard*/) {
        return false;
    }
    /// Returns a value of `NSDragOperation`; `NSDragOperationNone` refuses the drop. May move the drop with
    /// `setDropRow`.
    virtual uint32_t validateDrop(NSTableView& /*tableView*/, const Ref<NSPasteboard>& /*pasteboard*/,
                                  int32_t /*proposedRow*/, NSTableViewDropOperation /*proposedDropOperation*/) {
        return NSDragOperationNone;
    }
    /// Performs a drop, with the contents of the drag on the pasteboard, where `validateDrop` allowed it. Returns false
    /// if it fails.
    virtual bool acceptDrop(NSTableView& /*tableView*/, const Ref<NSPasteboard>& /*pasteboard*/, int32_t /*row*/,
                            NSTableViewDropOperation /*dropOperation*/) {
        return false;
    }
};

/// Decides how a table behaves.
class NSTableViewDelegate {
public:
    virtual ~NSTableViewDelegate() = default;
    /// Called when the cell has the row's value and is about to be drawn or read. One cell serves all rows, so a
    /// property changed for one row must be set for every row.
    virtual void willDisplayCell(NSTableView& /*tableView*/, NSCell& /*cell*/, NSTableColumn& /*forColumn*/,
                                 int32_t /*row*/) {}
    /// Called before the user or the program edits a text.
    virtual bool shouldEditTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/, int32_t /*row*/) {
        return true;
    }
    /// Called before the pointer or a key changes the selection, but not by `selectRow` and `deselectAll`.
    virtual bool selectionShouldChangeInTableView(NSTableView& /*tableView*/) { return true; }
    /// Never called: only rows can be selected.
    virtual bool shouldSelectTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) { return true; }
    /// Called after any change of the selection, including by the removal of selected rows. The notification's object
    /// is the table view.
    virtual void tableViewSelectionDidChange(const NSNotification& /*notification*/) {}
    /// Called before `tableViewSelectionDidChange` while a button of the pointer is down. The notification's object is
    /// the table view, here and below.
    virtual void tableViewSelectionIsChanging(const NSNotification& /*notification*/) {}
    /// Called when the pointer presses a column's header, when it has clicked it, and when it has dragged the column
    /// to another place.
    ///@{
    virtual void mouseDownInHeaderOfTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void didClickTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void didDragTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    ///@}
    /// Called after a column has got another place, or another width, by the pointer or by the program.
    ///@{
    virtual void tableViewColumnDidMove(const NSNotification& /*notification*/) {}
    virtual void tableViewColumnDidResize(const NSNotification& /*notification*/) {}
    ///@}
};

/// A table that gets its contents from a data source and its appearance from the cells of its columns.
///
/// Owns neither the data source nor the delegate; each must be cleared before it is destroyed.
class NSTableView : public NSView {
public:
    /// For a widget in a window: a `TableWidget` from an interface file, since any other widget stays empty.
    static Ref<NSTableView> tableViewWithWidget(QTableView* widget);
    ~NSTableView() override;

    /// Appends a column at the right; it must not be null.
    void addTableColumn(const Ref<NSTableColumn>& column);
    /// From left to right.
    const std::vector<Ref<NSTableColumn>>& tableColumns() const;
    /// The first column with that identifier, or null.
    Ref<NSTableColumn> tableColumnWithIdentifier(const NSString& identifier) const;
    /// Not owned. Setting it reloads the rows; without a data source the table is empty.
    ///@{
    void setDataSource(NSTableViewDataSource* dataSource);
    NSTableViewDataSource* dataSource() const;
    ///@}
    /// Not owned; may be null.
    ///@{
    void setDelegate(NSTableViewDelegate* delegate);
    NSTableViewDelegate* delegate() const;
    ///@}

    /// Reloads the rows from the data source; the selection keeps its row numbers.
    void reloadData();
    /// As of the last reload.
    int32_t numberOfRows() const;
    /// The topmost selected row, or -1.
    int32_t selectedRow() const;
    /// From top to bottom.
    std::vector<int32_t> selectedRows() const;
    /// Selects a row in addition to the selected rows, or instead of them. Does nothing if there is no such row.
    void selectRow(int32_t row, bool byExtendingSelection);
    /// The sender is ignored.
    void deselectAll(const Ref<NSObject>& sender);

    /// Offers drops of this type to the data source.
    void registerForDraggedType(const Ref<NSString>& type);
    /// Moves the drop that is being validated.
    void setDropRow(int32_t row, NSTableViewDropOperation dropOperation);

    /// The context menu, unless a derived class has another one; null by default.
    void setMenu(const Ref<NSMenu>& menu);
    /// Returns the context menu for a click (or the menu key) at a position in the rows' area, in points; null opens no
    /// menu.
    virtual Ref<NSMenu> menuForEvent(int x, int y);
    /// The row (column) at that position, or -1.
    ///@{
    int32_t rowAtPoint(int x, int y) const;
    int32_t columnAtPoint(int x, int y) const;
    ///@}

    /// Starts editing a cell. Returns false if the delegate forbids it, if the cell is a button, or if there is no such
    /// cell.
    bool editColumn(int32_t column, int32_t row);
    /// Called after the editing of a cell; goes on to the next row after Return, to the next column after Tab.
    virtual void textDidEndEditing(const NSNotification& notification);

    std::string className() const override { return "NSTableView"; }

protected:
    /// As `tableViewWithWidget`.
    explicit NSTableView(QTableView* widget);

private:
    friend class TableWidget;
    friend class TableModel;
    void followHeader();
    class State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
