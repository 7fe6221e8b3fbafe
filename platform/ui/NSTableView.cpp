#include "QzAnno/platform/ui/NSTableView.h"

#include <QApplication>
#include <QHeaderView>
#include <algorithm>
#include <utility>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "platform/ui/TableState.h"

namespace qz {

Ref<NSTableColumn> NSTableColumn::initWithIdentifier(const Ref<NSString>& identifier, const Ref<NSString>& title) {
    const auto column = std::make_shared<NSTableColumn>();
    column->identifier_ = identifier;
    column->title_ = title ? title : identifier;
    column->dataCell_ = NSTextFieldCell::initTextCell(NSString::string());
    return column;
}

NSTableView::NSTableView(QTableView* widget) : NSView(widget), state_(std::make_unique<State>(*this)) {
    state_->widget = dynamic_cast<TableWidget*>(widget);
    if (!state_->widget) return;
    state_->widget->setTable(this);
    state_->widget->setModel(&state_->model);
    QObject::connect(state_->widget->selectionModel(), &QItemSelectionModel::selectionChanged, &state_->model, [this] {
        if (!state_->delegate) return;
        if (QApplication::mouseButtons() != Qt::NoButton)
            state_->delegate->tableViewSelectionIsChanging(
                {NSTableViewSelectionIsChangingNotification, refTo(*this), {}});
        state_->delegate->tableViewSelectionDidChange({NSTableViewSelectionDidChangeNotification, refTo(*this), {}});
    });
    followHeader();
}

void NSTableView::followHeader() {
    const QHeaderView* header = state_->widget->horizontalHeader();
    const auto tell = [this](auto operation) {
        return [this, operation](int column) {
            if (!state_->delegate || static_cast<size_t>(column) >= state_->columns.size()) return;
            (state_->delegate->*operation)(*this, *state_->columns[static_cast<size_t>(column)]);
        };
    };
    const auto post = [this](auto operation, const Ref<NSString>& name) {
        if (state_->delegate) (state_->delegate->*operation)({name, refTo(*this), {}});
    };
    QObject::connect(header, &QHeaderView::sectionPressed, &state_->model, [=, this](int column) {
        state_->pressedColumn = column;
        tell (&NSTableViewDelegate::mouseDownInHeaderOfTableColumn)(column);
    });
    QObject::connect(header, &QHeaderView::sectionClicked, &state_->model, [=, this](int column) {
        state_->pressedColumn = -1;
        tell (&NSTableViewDelegate::didClickTableColumn)(column);
    });
    QObject::connect(header, &QHeaderView::sectionMoved, &state_->model, [=, this](int column) {
        post(&NSTableViewDelegate::tableViewColumnDidMove, NSTableViewColumnDidMoveNotification);
        // The toolkit moves a dragged column when the button is released; nothing else tells it from a program's move.
        if (std::exchange(state_->pressedColumn, -1) == column) tell (&NSTableViewDelegate::didDragTableColumn)(column);
    });
    QObject::connect(header, &QHeaderView::sectionResized, &state_->model, [=] {
        post(&NSTableViewDelegate::tableViewColumnDidResize, NSTableViewColumnDidResizeNotification);
    });
}

NSTableView::~NSTableView() {
    // Do not report the selection changes that dropping the rows causes.
    state_->delegate = nullptr;
    if (!state_->widget) return;
    state_->widget->setTable(nullptr);
    state_->widget->setModel(nullptr);
}

Ref<NSTableView> NSTableView::tableViewWithWidget(QTableView* widget) {
    return Ref<NSTableView>(new NSTableView(widget));
}

void NSTableView::addTableColumn(const Ref<NSTableColumn>& column) {
    state_->columns.push_back(column);
    state_->model.addColumn();
}

const std::vector<Ref<NSTableColumn>>& NSTableView::tableColumns() const {
    return state_->columns;
}

Ref<NSTableColumn> NSTableView::tableColumnWithIdentifier(const NSString& identifier) const {
    const auto found = std::ranges::find_if(state_->columns, [&](const Ref<NSTableColumn>& column) {
        return column->identifier()->isEqualToString(identifier);
    });
    return found == state_->columns.end() ? nullptr : *found;
}

void NSTableView::setDataSource(NSTableViewDataSource* dataSource) {
    state_->dataSource = dataSource;
    reloadData();
}

NSTableViewDataSource* NSTableView::dataSource() const {
    return state_->dataSource;
}

void NSTableView::setDelegate(NSTableViewDelegate* delegate) {
    state_->delegate = delegate;
}

NSTableViewDelegate* NSTableView::delegate() const {
    return state_->delegate;
}

void NSTableView::reloadData() {
    state_->model.reload();
}

int32_t NSTableView::numberOfRows() const {
    return state_->model.rowCount();
}

std::vector<int32_t> NSTableView::selectedRows() const {
    std::vector<int32_t> rows;
    if (!state_->widget) return rows;
    for (const QModelIndex& index : state_->widget->selectionModel()->selectedRows()) rows.push_back(index.row());
    std::ranges::sort(rows);
    return rows;
}

int32_t NSTableView::selectedRow() const {
    const std::vector<int32_t> rows = selectedRows();
    return rows.empty() ? -1 : rows.front();
}

void NSTableView::selectRow(int32_t row, bool byExtendingSelection) {
    if (!state_->widget || row < 0 || row >= numberOfRows()) return;
    const auto how = byExtendingSelection ? QItemSelectionModel::Select : QItemSelectionModel::ClearAndSelect;
    // Key navigation continues from there.
    state_->widget->selectionModel()->setCurrentIndex(state_->model.index(row, 0), how | QItemSelectionModel::Rows);
}

void NSTableView::deselectAll(const Ref<NSObject>& /*sender*/) {
    if (state_->widget) state_->widget->selectionModel()->clearSelection();
}

void NSTableView::registerForDraggedType(const Ref<NSString>& type) {
    state_->draggedType = type;
    if (!state_->widget) return;
    state_->widget->setAcceptDrops(true);
    state_->widget->viewport()->setAcceptDrops(true);
}

void NSTableView::setDropRow(int32_t row, NSTableViewDropOperation dropOperation) {
    state_->dropRow = row;
    state_->dropOperation = dropOperation;
}

void NSTableView::setMenu(const Ref<NSMenu>& menu) {
    state_->menu = menu;
}

Ref<NSMenu> NSTableView::menuForEvent(int /*x*/, int /*y*/) {
    return state_->menu;
}

int32_t NSTableView::rowAtPoint(int /*x*/, int y) const {
    return state_->widget ? state_->widget->rowAt(y) : -1;
}

int32_t NSTableView::columnAtPoint(int x, int /*y*/) const {
    return state_->widget ? state_->widget->columnAt(x) : -1;
}

bool NSTableView::editColumn(int32_t column, int32_t row) {
    const QModelIndex index = state_->model.index(row, column);
    if (!state_->widget || !index.isValid() || !(index.flags() & Qt::ItemIsEditable)) return false;
    state_->widget->setCurrentIndex(index);
    state_->widget->QTableView::edit(index);
    return state_->widget->isPersistentEditorOpen(index);
}

void NSTableView::textDidEndEditing(const NSNotification& notification) {
    const auto number =
        notification.userInfo ? notification.userInfo->objectForKey<NSNumber>(*NSTextMovementKey) : nullptr;
    const int32_t movement = number ? number->intValue() : NSIllegalTextMovement;
    if (!state_->widget || movement == NSIllegalTextMovement) return;
    const QModelIndex edited = state_->widget->currentIndex();
    if (movement == NSReturnTextMovement) {
        editColumn(edited.column(), edited.row() + 1);
        return;
    }
    const int step = movement == NSTabTextMovement ? 1 : -1;
    for (int column = edited.column() + step; column >= 0 && column < state_->model.columnCount(); column += step) {
        if (editColumn(column, edited.row())) return;
    }
}

}  // namespace qz
