#pragma once

#include "QzAnno/platform/ui/NSTableView.h"

namespace qz {

/// A delegate that can supply a context menu for a place in the table.
class MenuContextTableViewDelegate {
public:
    virtual ~MenuContextTableViewDelegate() = default;
    /// Row and column are -1 outside the cells. Returning null means the table's own menu.
    virtual Ref<NSMenu> menuForRow(int32_t row, int32_t column) = 0;
};

/// A table that remembers where its context menu was opened, and in which Return ends the editing of a cell without
/// going on to the next row.
class MenuContextTableView final : public NSTableView {
public:
    /// For a widget in a window.
    static Ref<MenuContextTableView> tableViewWithWidget(QTableView* widget);

    /// The row (column) of the last context menu; -1 outside the cells.
    ///@{
    int32_t menuRow() const { return row_; }
    int32_t menuColumn() const { return column_; }
    ///@}

    Ref<NSMenu> menuForEvent(int x, int y) override;
    void textDidEndEditing(const NSNotification& notification) override;

    std::string className() const override { return "MenuContextTableView"; }

private:
    using NSTableView::NSTableView;

    int32_t row_ = -1;
    int32_t column_ = -1;
};

}  // namespace qz
