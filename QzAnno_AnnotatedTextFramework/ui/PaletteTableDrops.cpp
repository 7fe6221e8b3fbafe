#include <algorithm>

#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/ui/QzAnnoPaletteAsTable.h"

namespace qz {

bool QzAnnoPaletteAsTable::writeRows(NSTableView& /*tableView*/, const std::vector<int32_t>& rows,
                                     const Ref<NSPasteboard>& toPasteboard) {
    if (std::ranges::any_of(rows, [this](int32_t row) { return isBelowPalette(row); })) return false;
    std::vector<Ref<NSObject>> numbers;
    for (int32_t row : rows) numbers.push_back(NSNumber::numberWithInt(row));
    toPasteboard->declareType(QzTaviAnnoPalettePboardType);
    return toPasteboard->setPropertyList(NSArray::arrayWithObjects(std::move(numbers)), QzTaviAnnoPalettePboardType);
}

uint32_t QzAnnoPaletteAsTable::validateDrop(NSTableView& tableView, const Ref<NSPasteboard>& pasteboard,
                                            int32_t proposedRow, NSTableViewDropOperation proposedDropOperation) {
    if (!pasteboard->offersType(QzTaviAnnoPalettePboardType)) return NSDragOperationNone;
    tableView.setDropRow(proposedRow, NSTableViewDropOperation::above);
    if (isBelowPalette(proposedRow - 1)) return NSDragOperationNone;
    // Rows may be dropped between rows, not on a row.
    return proposedDropOperation == NSTableViewDropOperation::above ? NSDragOperationCopy : NSDragOperationNone;
}

bool QzAnnoPaletteAsTable::acceptDrop(NSTableView& tableView, const Ref<NSPasteboard>& pasteboard, int32_t row,
                                      NSTableViewDropOperation /*dropOperation*/) {
    if (!annotationPalette_) return false;
    if (!pasteboard->offersType(QzTaviAnnoPalettePboardType)) {
        tableView.reloadData();
        return true;
    }
    std::vector<Ref<QzAnnoKey>> reselected;
    for (int32_t selected : tableView.selectedRows()) {
        const auto key = isBelowPalette(selected) ? nullptr : keyOfRow(selected);
        if (key) reselected.push_back(key);
    }
    // Data from another process may hold anything.
    const auto rows = std::dynamic_pointer_cast<NSArray>(pasteboard->propertyListForType(QzTaviAnnoPalettePboardType));
    std::vector<Ref<QzAnnoKey>> dropped;
    for (const Ref<NSObject>& element : rows ? rows->elements() : std::vector<Ref<NSObject>>()) {
        const auto number = std::dynamic_pointer_cast<NSNumber>(element);
        const Ref<QzAnnoKey> key = number ? keyOfRow(number->intValue()) : nullptr;
        if (key && !isBelowPalette(number->intValue())) dropped.push_back(key);
    }

    Ref<QzAnnoKey> anchor;
    for (int32_t priority = std::max(0, maxPriority() - row + 1); priority <= maxPriority() && !anchor; ++priority) {
        const Ref<QzAnnoKey> key = annotationPalette_->annoKeyAtPriority(priority);
        if (std::ranges::find(dropped, key) == dropped.end()) anchor = key;
    }
    anchor ? moveBelow(anchor, dropped) : moveToTop(dropped);

    tableView.deselectAll({});
    for (const Ref<QzAnnoKey>& key : reselected) {
        tableView.selectRow(maxPriority() - annotationPalette_->lookupPrio(key), true);
    }
    tableView.reloadData();
    return true;
}

/// Moves them from last to first, so that each lands above the one before.
void QzAnnoPaletteAsTable::moveBelow(const Ref<QzAnnoKey>& anchor, const std::vector<Ref<QzAnnoKey>>& keys) {
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        const int32_t anchorPriority = annotationPalette_->lookupPrio(anchor);
        const bool isAbove = annotationPalette_->lookupPrio(*key) > anchorPriority - 1;
        // Removing a key from below moves the anchor down by one.
        annotationPalette_->setAnnoKey(*key, isAbove ? anchorPriority : anchorPriority - 1);
    }
}

void QzAnnoPaletteAsTable::moveToTop(const std::vector<Ref<QzAnnoKey>>& keys) {
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        annotationPalette_->setAnnoKey(*key, annotationPalette_->maxPriority());
    }
}

}  // namespace qz
