#pragma once

#include <cstdint>
#include <vector>

#include "platform/foundation/NSNotificationCenter.h"
#include "platform/ui/NSCell.h"
#include "platform/ui/NSMenu.h"
#include "platform/ui/NSPasteboard.h"
#include "platform/ui/NSView.h"

class QTableView;

namespace qz {

class NSTableView;

inline const Ref<NSString> NSTableViewSelectionDidChangeNotification = "NSTableViewSelectionDidChangeNotification"_ns;
inline const Ref<NSString> NSTextDidEndEditingNotification = "NSTextDidEndEditingNotification"_ns;
/// Key of the user info of `NSTextDidEndEditingNotification`: a number of `NSTextMovement`.
inline const Ref<NSString> NSTextMovementKey = "NSTextMovement"_ns;
enum NSTextMovement : int32_t {
    NSIllegalTextMovement = 0,
    NSReturnTextMovement = 16,
    NSTabTextMovement = 17,
    NSBacktabTextMovement = 18
};

enum class NSTableViewDropOperation : int32_t { on = 0, above = 1 };
/// The values of the platform's drag operations that a table answers with.
enum NSDragOperation : uint32_t { NSDragOperationNone = 0, NSDragOperationCopy = 1 };

class NSTableColumn final : public NSObject {
public:
    static Ref<NSTableColumn> initWithIdentifier(const Ref<NSString>& identifier, const Ref<NSString>& title = {});

    const Ref<NSString>& identifier() const { return identifier_; }
    const Ref<NSString>& title() const { return title_; }
    /// Never none.
    const Ref<NSCell>& dataCell() const { return dataCell_; }
    void setDataCell(const Ref<NSCell>& cell) { dataCell_ = cell; }

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
    virtual int32_t numberOfRowsInTableView(NSTableView& tableView) = 0;
    virtual Ref<NSObject> objectValueForTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) = 0;
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
    virtual bool acceptDrop(NSTableView& /*tableView*/, const Ref<NSPasteboard>& /*pasteboard*/, int32_t /*row*/,
                            NSTableViewDropOperation /*dropOperation*/) {
        return false;
    }
};

/// Whom a table asks how it should behave.
class NSTableViewDelegate {
public:
    virtual ~NSTableViewDelegate() = default;
    virtual void willDisplayCell(NSTableView& /*tableView*/, NSCell& /*cell*/, NSTableColumn& /*forColumn*/,
                                 int32_t /*row*/) {}
    virtual bool shouldEditTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/, int32_t /*row*/) {
        return true;
    }
    virtual bool selectionShouldChangeInTableView(NSTableView& /*tableView*/) { return true; }
    virtual bool shouldSelectTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) { return true; }
    virtual void tableViewSelectionDidChange(const NSNotification& /*notification*/) {}
    virtual void tableViewSelectionIsChanging(const NSNotification& /*notification*/) {}
    virtual void didClickTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void mouseDownInHeaderOfTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void didDragTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) {}
    virtual void tableViewColumnDidMove(const NSNotification& /*notification*/) {}
    virtual void tableViewColumnDidResize(const NSNotification& /*notification*/) {}
};

/// A table whose contents come from its data source and whose looks from the cells of its columns.
///
/// Neither data source nor delegate is owned; whoever is one clears itself before it dies.
class NSTableView : public NSView {
public:
    /// On a widget that lies in a window.
    static Ref<NSTableView> tableViewWithWidget(QTableView* widget);
    ~NSTableView() override;

    void addTableColumn(const Ref<NSTableColumn>& column);
    const std::vector<Ref<NSTableColumn>>& tableColumns() const;
    Ref<NSTableColumn> tableColumnWithIdentifier(const NSString& identifier) const;
    void setDataSource(NSTableViewDataSource* dataSource);
    NSTableViewDataSource* dataSource() const;
    void setDelegate(NSTableViewDelegate* delegate);
    NSTableViewDelegate* delegate() const;

    /// Takes the rows anew from the data source; the selection keeps its row numbers.
    void reloadData();
    int32_t numberOfRows() const;
    /// The selected row, the topmost of several; -1 when there is none.
    int32_t selectedRow() const;
    /// From top to bottom.
    std::vector<int32_t> selectedRows() const;
    void selectRow(int32_t row, bool byExtendingSelection);
    void deselectAll(const Ref<NSObject>& sender);

    /// Drops of this type are offered to the data source.
    void registerForDraggedType(const Ref<NSString>& type);
    /// Moves the place of a drop that is being validated.
    void setDropRow(int32_t row, NSTableViewDropOperation dropOperation);

    void setMenu(const Ref<NSMenu>& menu);
    /// The context menu for a click (or the key) at a place of the rows' area, in points; none opens none.
    virtual Ref<NSMenu> menuForEvent(int x, int y);
    /// The row (column) at that place; -1 where there is none.
    int32_t rowAtPoint(int x, int y) const;
    int32_t columnAtPoint(int x, int y) const;

    /// Begins to edit a cell when the delegate allows it.
    bool editColumn(int32_t column, int32_t row);
    /// Called when the editing of a cell has ended; Return goes on to the next row, Tab to the next column.
    virtual void textDidEndEditing(const NSNotification& notification);

    std::string className() const override { return "NSTableView"; }

protected:
    explicit NSTableView(QTableView* widget);

private:
    friend class TableWidget;
    friend class TableModel;
    class State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
