#include "platform/ui/TableWidget.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QDropEvent>
#include <QHeaderView>
#include <QPainter>
#include <algorithm>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/ui/QtValues.h"
#include "platform/ui/TableState.h"

namespace qz {
namespace {

Qt::CheckState checkState(const NSButtonCell& cell) {
    const int32_t state = cell.state();
    return state < 0 ? Qt::PartiallyChecked : state > 0 ? Qt::Checked : Qt::Unchecked;
}

/// The state of a button after a click: mixed becomes on.
int32_t nextState(const NSButtonCell& cell) {
    return cell.state() > 0 ? 0 : 1;
}

const TableModel& modelOf(const QModelIndex& index) {
    return static_cast<const TableModel&>(*index.model());
}

}  // namespace

// Model

void TableModel::reload() {
    NSTableViewDataSource* source = table_.dataSource();
    const int rows = source ? std::max(0, source->numberOfRowsInTableView(table_)) : 0;
    if (rows > rows_) {
        beginInsertRows({}, rows_, rows - 1);
        rows_ = rows;
        endInsertRows();
    } else if (rows < rows_) {
        beginRemoveRows({}, rows, rows_ - 1);
        rows_ = rows;
        endRemoveRows();
    }
    if (rows_ > 0 && columns_ > 0) emit dataChanged(index(0, 0), index(rows_ - 1, columns_ - 1));
}

void TableModel::addColumn() {
    beginInsertColumns({}, columns_, columns_);
    ++columns_;
    endInsertColumns();
}

NSCell* TableModel::cellAt(const QModelIndex& index) const {
    NSTableViewDataSource* source = table_.dataSource();
    const auto& columns = table_.tableColumns();
    if (!source || !index.isValid() || static_cast<size_t>(index.column()) >= columns.size()) return nullptr;
    NSTableColumn& column = *columns[static_cast<size_t>(index.column())];
    const Ref<NSObject> value = source->objectValueForTableColumn(table_, column, index.row());
    NSCell& cell = *column.dataCell();
    cell.setObjectValue(value);
    if (NSTableViewDelegate* delegate = table_.delegate()) delegate->willDisplayCell(table_, cell, column, index.row());
    return &cell;
}

QVariant TableModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::CheckStateRole && role != Qt::FontRole &&
        role != Qt::AccessibleTextRole) {
        return {};
    }
    const NSCell* cell = cellAt(index);
    if (!cell) return {};
    if (role == Qt::FontRole) {
        if (!cell->font() && !cell->isStruckOut()) return {};
        QFont font;
        if (cell->font()) font.setPointSizeF(cell->font()->pointSize());
        font.setStrikeOut(cell->isStruckOut());
        return font;
    }
    if (role == Qt::AccessibleTextRole && cell->accessibilityLabel()) return toQt(*cell->accessibilityLabel());
    const auto* button = dynamic_cast<const NSButtonCell*>(cell);
    if (!button) return role == Qt::CheckStateRole ? QVariant() : toQt(*cell->stringValue());
    if (role == Qt::CheckStateRole) return button->isTransparent() ? QVariant() : QVariant(checkState(*button));
    if (role == Qt::AccessibleTextRole)
        return toQt(*table_.tableColumns()[static_cast<size_t>(index.column())]->title());
    return button->buttonType() == NSButtonType::toggle ? toQt(*button->title()) : QVariant();
}

bool TableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    NSTableViewDataSource* source = table_.dataSource();
    if (!source || !index.isValid()) return false;
    Ref<NSObject> object;
    if (role == Qt::EditRole) object = fromQt(value.toString());
    if (role == Qt::CheckStateRole) object = NSNumber::numberWithInt(value.toInt());
    if (object)
        source->setObjectValue(table_, object, *table_.tableColumns()[static_cast<size_t>(index.column())],
                               index.row());
    return object != nullptr;
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Ref<NSCell>& cell = table_.tableColumns()[static_cast<size_t>(index.column())]->dataCell();
    const bool isButton = dynamic_cast<const NSButtonCell*>(cell.get()) != nullptr;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled |
           (isButton ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const auto& columns = table_.tableColumns();
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || static_cast<size_t>(section) >= columns.size())
        return {};
    return toQt(*columns[static_cast<size_t>(section)]->title());
}

// Cells

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const auto* button = dynamic_cast<const NSButtonCell*>(modelOf(index).cellAt(index));
    if (!button) return QStyledItemDelegate::paint(painter, option, index);
    QStyle* style = item.widget->style();
    item.text.clear();
    item.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);
    if (button->isTransparent()) return;
    if (button->buttonType() == NSButtonType::toggle) {
        QStyleOptionButton frame;
        frame.rect = item.rect.adjusted(2, 1, -2, -1);
        frame.palette = item.palette;
        frame.fontMetrics = item.fontMetrics;
        frame.text = toQt(*button->title());
        frame.state =
            QStyle::State_Enabled | (button->state() > 0 ? QStyle::State_On | QStyle::State_Sunken : QStyle::State_Off);
        style->drawControl(QStyle::CE_PushButton, &frame, painter, item.widget);
        return;
    }
    QStyleOptionViewItem indicator = item;
    const QSize size(style->pixelMetric(QStyle::PM_IndicatorWidth, &item, item.widget),
                     style->pixelMetric(QStyle::PM_IndicatorHeight, &item, item.widget));
    indicator.rect = QStyle::alignedRect(item.direction, Qt::AlignCenter, size, item.rect);
    indicator.state &= ~QStyle::State_HasFocus;
    // On a dark table, an empty box in the table's own colour would be invisible.
    const QColor base = item.palette.color(QPalette::Base);
    if (base.lightness() < 128) indicator.palette.setColor(QPalette::Base, item.palette.color(QPalette::Button));
    const Qt::CheckState state = checkState(*button);
    indicator.state |=
        state == Qt::Checked ? QStyle::State_On : (state == Qt::Unchecked ? QStyle::State_Off : QStyle::State_NoChange);
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &indicator, painter, item.widget);
}

bool CellDelegate::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                               const QModelIndex& index) {
    const auto* button = dynamic_cast<const NSButtonCell*>(modelOf(index).cellAt(index));
    if (!button || !button->isEnabled() || button->isTransparent()) return false;
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key != Qt::Key_Space && key != Qt::Key_Select) return false;
    } else if (event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->position().toPoint())) return false;
    } else {
        // The press belongs to the following click and selects no row.
        return event->type() == QEvent::MouseButtonDblClick;
    }
    return model->setData(index, nextState(*button), Qt::CheckStateRole);
}

// Widget

TableWidget::TableWidget(QWidget* parent) : QTableView(parent) {
    setItemDelegate(new CellDelegate(this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    setDragDropMode(QAbstractItemView::NoDragDrop);
    setDragEnabled(true);
    setShowGrid(false);
    setAlternatingRowColors(true);
    // Tab leaves the table, so that everything in the window can be reached from the keyboard.
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(verticalHeader()->fontMetrics().height() + 8);
    verticalHeader()->setMinimumSectionSize(0);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(false);
}

bool TableWidget::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
    if (trigger == EditKeyPressed && index.isValid() && !(index.flags() & Qt::ItemIsEditable)) {
        // When requested by key, a row is edited whichever of its cells has the focus.
        for (int column = 0; column < model()->columnCount(); ++column) {
            const QModelIndex sibling = index.siblingAtColumn(column);
            if (sibling.flags() & Qt::ItemIsEditable) return edit(sibling, trigger, event);
        }
    }
    const bool opensEditor = index.isValid() && (trigger == AllEditTriggers || (editTriggers() & trigger)) &&
                             (index.flags() & Qt::ItemIsEditable);
    if (opensEditor && table_ && table_->delegate()) {
        NSTableColumn& column = *table_->tableColumns()[static_cast<size_t>(index.column())];
        if (!table_->delegate()->shouldEditTableColumn(*table_, column, index.row())) return false;
    }
    return QTableView::edit(index, trigger, event);
}

void TableWidget::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    QTableView::closeEditor(editor, QAbstractItemDelegate::NoHint);
    int32_t movement = NSIllegalTextMovement;
    if (hint == QAbstractItemDelegate::SubmitModelCache) movement = NSReturnTextMovement;
    if (hint == QAbstractItemDelegate::EditNextItem) movement = NSTabTextMovement;
    if (hint == QAbstractItemDelegate::EditPreviousItem) movement = NSBacktabTextMovement;
    if (!table_) return;
    ObjectMap info;
    info.set(NSTextMovementKey, NSNumber::numberWithInt(movement));
    table_->textDidEndEditing(
        {NSTextDidEndEditingNotification, refTo(*table_), NSDictionary::dictionaryWithMap(std::move(info))});
}

QItemSelectionModel::SelectionFlags TableWidget::selectionCommand(const QModelIndex& index, const QEvent* event) const {
    NSTableViewDelegate* delegate = table_ ? table_->delegate() : nullptr;
    if (delegate && !delegate->selectionShouldChangeInTableView(*table_)) return QItemSelectionModel::NoUpdate;
    return QTableView::selectionCommand(index, event);
}

void TableWidget::contextMenuEvent(QContextMenuEvent* event) {
    if (!table_) return;
    QPoint place = event->pos();
    if (event->reason() == QContextMenuEvent::Keyboard && currentIndex().isValid()) {
        place = visualRect(currentIndex()).center();
    }
    if (const Ref<NSMenu> menu = table_->menuForEvent(place.x(), place.y()))
        menu->popUp(viewport(), place.x(), place.y());
    event->accept();
}

// Drags and drops

QMimeData* TableWidget::newDragData() {
    NSTableViewDataSource* source = table_ ? table_->dataSource() : nullptr;
    const std::vector<int32_t> rows = table_ ? table_->selectedRows() : std::vector<int32_t>();
    const Ref<NSPasteboard>& pasteboard = NSPasteboard::dragPasteboard();
    if (!source || rows.empty() || !source->writeRows(*table_, rows, pasteboard)) return nullptr;
    return pasteboard->newMimeData();
}

void TableWidget::startDrag(Qt::DropActions /*actions*/) {
    QMimeData* dragged = newDragData();
    if (!dragged) return;
    auto* drag = new QDrag(this);
    drag->setMimeData(dragged);
    dragLoop(*drag);
}

void TableWidget::proposeDrop(int y) {
    NSTableView::State& state = *table_->state_;
    const int row = rowAt(y);
    if (row < 0) {
        state.dropRow = table_->numberOfRows();
        state.dropOperation = NSTableViewDropOperation::above;
        return;
    }
    // The middle half of a row means the row itself, the rest the gap on that side.
    const int top = rowViewportPosition(row);
    const int height = rowHeight(row);
    const bool isMiddle = y >= top + height / 4 && y < top + height - height / 4;
    state.dropRow = !isMiddle && y >= top + height / 2 ? row + 1 : row;
    state.dropOperation = isMiddle ? NSTableViewDropOperation::on : NSTableViewDropOperation::above;
}

bool TableWidget::answerDrag(QDropEvent& event) {
    uint32_t operation = NSDragOperationNone;
    const Ref<NSPasteboard> pasteboard = NSPasteboard::pasteboardWithMimeData(*event.mimeData());
    if (table_ && table_->dataSource() && table_->state_->acceptsDragOf(*pasteboard)) {
        proposeDrop(event.position().toPoint().y());
        const NSTableView::State& state = *table_->state_;
        operation = table_->dataSource()->validateDrop(*table_, pasteboard, state.dropRow, state.dropOperation);
    }
    if (operation != NSDragOperationNone) {
        event.setDropAction(Qt::CopyAction);
        event.accept();
    } else {
        event.ignore();
    }
    showDrop(operation != NSDragOperationNone);
    return operation != NSDragOperationNone;
}

void TableWidget::dragLeaveEvent(QDragLeaveEvent* event) {
    showDrop(false);
    event->accept();
}

void TableWidget::dropEvent(QDropEvent* event) {
    const bool mayDrop = answerDrag(*event);
    showDrop(false);
    if (!mayDrop) return;
    const NSTableView::State& state = *table_->state_;
    const Ref<NSPasteboard> pasteboard = NSPasteboard::pasteboardWithMimeData(*event->mimeData());
    const bool isDone = table_->dataSource()->acceptDrop(*table_, pasteboard, state.dropRow, state.dropOperation);
    event->setAccepted(isDone);
}

void TableWidget::showDrop(bool isShown) {
    if (!isShown && !dropIsShown_) return;
    dropIsShown_ = isShown;
    viewport()->update();
}

void TableWidget::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (!dropIsShown_ || !table_) return;
    const int32_t row = table_->state_->dropRow;
    const int32_t rows = table_->numberOfRows();
    const int y =
        row < rows ? rowViewportPosition(row) : (rows > 0 ? rowViewportPosition(rows - 1) + rowHeight(rows - 1) : 0);
    QPainter painter(viewport());
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawLine(0, std::max(1, y), viewport()->width(), std::max(1, y));
}

}  // namespace qz
