#pragma once

#include <QAbstractTableModel>
#include <QDrag>
#include <QDropEvent>
#include <QStyledItemDelegate>
#include <QTableView>
#include <functional>

#include "QzAnno/platform/ui/NSTableView.h"

namespace qz {

/// The toolkit's model of a table view's rows and columns.
class TableModel final : public QAbstractTableModel {
public:
    explicit TableModel(NSTableView& table) : table_(table) {}

    /// Reports that every row may have changed.
    void reload();
    void addColumn();
    /// The column's cell with the row's value; null outside the table.
    NSCell* cellAt(const QModelIndex& index) const;

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : columns_; }
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    NSTableView& table_;
    int rows_ = 0;
    int columns_ = 0;
};

/// Draws button cells and handles their clicks and the space key.
class CellDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
};

/// The widget of a table view.
class TableWidget final : public QTableView {
public:
    explicit TableWidget(QWidget* parent = nullptr);
    /// The view receives the events; null stops that.
    void setTable(NSTableView* table) { table_ = table; }

    /// Runs a drag until its drop. Without a pointer the toolkit's loop ends at once, so tests supply their own.
    static inline std::function<void(QDrag& drag)> dragLoop = [](QDrag& drag) { drag.exec(Qt::CopyAction); };

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override { answerDrag(*event); }
    void dragMoveEvent(QDragMoveEvent* event) override { answerDrag(*event); }
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The data for dragging the selected rows; null if the data source refuses.
    QMimeData* newDragData();
    /// Asks the data source whether to allow the drop at the pointer.
    bool answerDrag(QDropEvent& event);
    void proposeDrop(int y);
    void showDrop(bool isShown);

    NSTableView* table_ = nullptr;
    bool dropIsShown_ = false;
};

}  // namespace qz
