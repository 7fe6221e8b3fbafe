#pragma once

#include "QzAnno/platform/ui/NSTableView.h"

namespace qz {

/// A delegate that may have a context menu of its own for a place of the table.
class MenuContextTableViewDelegate {
public:
    virtual ~MenuContextTableViewDelegate() = default;
    /// Row and column are -1 where there is none. No menu: the table's own serves.
    virtual Ref<NSMenu> menuForRow(int32_t row, int32_t column) = 0;
};

/// A table that remembers where its context menu was asked for, and in which Return ends the editing of a cell without
/// going on to the next row.
class MenuContextTableView final : public NSTableView {
public:
    /// On a widget that lies in a window.
    static Ref<MenuContextTableView> tableViewWithWidget(QTableView* widget);

    /// Of the last context menu; -1 where there was none.
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
