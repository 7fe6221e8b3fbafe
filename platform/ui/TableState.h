#pragma once

#include <QPointer>

#include "QzAnno/platform/ui/NSTableView.h"
#include "platform/ui/TableWidget.h"

namespace qz {

class NSTableView::State {
public:
    explicit State(NSTableView& table) : model(table) {}

    bool acceptsDragOf(const NSPasteboard& pasteboard) const {
        return draggedType && pasteboard.offersType(draggedType);
    }

    QPointer<TableWidget> widget;
    TableModel model;
    std::vector<Ref<NSTableColumn>> columns;
    NSTableViewDataSource* dataSource = nullptr;
    NSTableViewDelegate* delegate = nullptr;
    Ref<NSMenu> menu;
    Ref<NSString> draggedType;
    int pressedColumn = -1;  ///< whose header the pointer has pressed and not clicked yet
    int32_t dropRow = -1;
    NSTableViewDropOperation dropOperation = NSTableViewDropOperation::on;
};

}  // namespace qz
