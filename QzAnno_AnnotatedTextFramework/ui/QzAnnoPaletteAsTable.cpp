#include "QzAnno/ui/QzAnnoPaletteAsTable.h"

#include <QLabel>
#include <algorithm>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/ui/AnnotationReporting.h"
#include "QzAnno/ui/QzAnnoEditor.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "QzAnno_AnnotatedTextFramework/ui/KeyRenaming.h"
#include "QzAnno_AnnotatedTextFramework/ui/KeySets.h"

namespace qz {
namespace {

constexpr float kNameFontSize = 10.0f;
constexpr const char* kMayChange = "mayChangePalette";

bool hasIdentifier(const NSTableColumn& column, const char* identifier) {
    return column.identifier()->utf8() == identifier;
}

bool holds(const Ref<NSSet>& set, const QzAnnoKey& key) {
    return set && set->containsObject(key);
}

/// Whether the sets are equal; null equals only null.
bool areEqualSets(const Ref<NSSet>& a, const Ref<NSSet>& b) {
    return areEqual(a, b);
}

}  // namespace

QzAnnoPaletteAsTable::QzAnnoPaletteAsTable() {
    defineProperty("palette", {[this] { return annotationPalette_; }, nullptr});
    defineProperty("editPrio", {[this] { return NSNumber::numberWithInt(editPrio_); }, nullptr});
    defineProperty("haveMouseSelected", {[this] { return NSNumber::numberWithBool(haveMouseSelected_); }, nullptr});
    defineProperty("haveNonGlobalSelected",
                   {[this] { return NSNumber::numberWithBool(haveNonGlobalSelected_); }, nullptr});
    defineProperty(kMayChange, {[this] { return NSNumber::numberWithBool(mayChangePalette()); }, nullptr});
    setHandler("newAnno:", [this](const Ref<NSObject>& sender) { newAnno(sender); });
    setHandler("editAnno:", [this](const Ref<NSObject>& sender) { editAnno(sender); });
    setHandler("deleteAnno:", [this](const Ref<NSObject>& sender) { deleteAnno(sender); });
}

Ref<QzAnnoPaletteAsTable> QzAnnoPaletteAsTable::init() {
    return Ref<QzAnnoPaletteAsTable>(new QzAnnoPaletteAsTable);
}

QzAnnoPaletteAsTable::~QzAnnoPaletteAsTable() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    if (const Ref<QzAnnoEditor> editor = outlets_.annoAsTable.lock()) editor->removeObserver(this);
    if (!outlets_.tableView) return;
    outlets_.tableView->setDelegate(nullptr);
    outlets_.tableView->setDataSource(nullptr);
}

void QzAnnoPaletteAsTable::connectOutlets(const Outlets& outlets) {
    outlets_ = outlets;
    outlets_.tableView->setMenu(outlets_.menuForTable);
    outlets_.tableView->setDelegate(this);
    outlets_.tableView->setDataSource(this);
    if (const Ref<QzAnnoEditor> editor = outlets_.annoAsTable.lock()) {
        editor->addObserver(this, nullptr, [this](const std::string& key) {
            if (key == "isEditing") announceMayChange();
        });
    }
}

void QzAnnoPaletteAsTable::announceMayChange() {
    willChangeValueForKey(kMayChange);
    didChangeValueForKey(kMayChange);
}

void QzAnnoPaletteAsTable::awakeFromNib() {
    outlets_.tableView->registerForDraggedType(QzTaviAnnoPalettePboardType);
    const Ref<NSButtonCell> toggle = NSButtonCell::init();
    toggle->setButtonType(NSButtonType::toggle);
    if (const auto column = outlets_.tableView->tableColumnWithIdentifier(*"Frame"_ns)) column->setDataCell(toggle);
}

void QzAnnoPaletteAsTable::setAnnotationPalette(const Ref<QzAnnoPalette>& palette) {
    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    willChangeValueForKey("palette");
    // Keep the former palette alive to the end of the change.
    const Ref<QzAnnoPalette> former = std::exchange(annotationPalette_, palette);
    isSelectionUnderPalette_ = false;
    notifications.removeObserver(this);
    if (outlets_.DBGtext) {
        // The address, truncated to the width of the format, tells palettes apart.
        const auto identity = static_cast<int32_t>(reinterpret_cast<uintptr_t>(palette.get()));
        outlets_.DBGtext->setText(
            QString::fromStdString(palette ? stringWithFormat("Palette ID: %i", {identity}) : "No Palette"));
    }
    if (palette) {
        notifications.addObserver(
            this, [this](const NSNotification& notification) { reloadTable(notification); }, {}, palette.get());
        // Nothing else announces an undone deletion.
        if (const Ref<NSUndoManager> undo = palette->undoManager()) {
            notifications.addObserver(
                this, [this](const NSNotification& notification) { reloadTable(notification); },
                NSUndoManagerDidUndoChangeNotification, undo.get());
            NSApplication::sharedApplication().groupUndoByEvent(undo);
        }
    }
    if (outlets_.tableView) outlets_.tableView->reloadData();
    forgetRowSelection();
    announceMayChange();
    didChangeValueForKey("palette");
}

void QzAnnoPaletteAsTable::forgetRowSelection() {
    change("haveMouseSelected", haveMouseSelected_, false);
    change("haveNonGlobalSelected", haveNonGlobalSelected_, false);
}

void QzAnnoPaletteAsTable::reloadTable(const NSNotification& /*notification*/) {
    if (outlets_.tableView) outlets_.tableView->reloadData();
}

// Rows

Ref<QzAnnoKey> QzAnnoPaletteAsTable::keyOfRow(int32_t row) const {
    if (!annotationPalette_) return {};
    if (!isBelowPalette(row)) return annotationPalette_->annoKeyAtPriority(maxPriority() - row);
    const std::vector<Ref<QzAnnoKey>> keys = keysWithoutAnnotation();
    const auto place = static_cast<size_t>(row - maxPriority() - 1);
    return place < keys.size() ? keys[place] : nullptr;
}

std::vector<Ref<QzAnnoKey>> QzAnnoPaletteAsTable::keysWithoutAnnotation() const {
    std::vector<Ref<QzAnnoKey>> keys;
    if (!isSelectionUnderPalette_) return keys;
    for (const Ref<NSSet>& set : {currentSelection_, shadedSelection_, frameSelection_}) {
        if (!set) continue;
        for (const Ref<QzAnnoKey>& key : set->objects<QzAnnoKey>()) {
            if (!key->valid() && std::ranges::find(keys, key) == keys.end()) keys.push_back(key);
        }
    }
    std::ranges::stable_sort(keys, {}, [](const Ref<QzAnnoKey>& key) { return key->name()->characters(); });
    return keys;
}

int32_t QzAnnoPaletteAsTable::numberOfRowsInTableView(NSTableView& /*tableView*/) {
    return annotationPalette_ ? maxPriority() + 1 + static_cast<int32_t>(keysWithoutAnnotation().size()) : 0;
}

int32_t QzAnnoPaletteAsTable::stateOfRow(int32_t row, const QzAnnoKey& key) const {
    if (holds(shadedSelection_, key)) return -1;
    return holds(currentSelection_, key) || row == maxPriority() || holds(frameSelection_, key) ? 1 : 0;
}

Ref<NSObject> QzAnnoPaletteAsTable::objectValueForTableColumn(NSTableView& /*tableView*/, NSTableColumn& column,
                                                              int32_t row) {
    const Ref<QzAnnoKey> key = keyOfRow(row);
    if (!key) return {};
    if (hasIdentifier(column, "selectionstate")) return NSNumber::numberWithInt(stateOfRow(row, *key));
    if (hasIdentifier(column, "Annotations")) {
        return row == maxPriority() ? "Default"_ns : key->name();
    }
    if (hasIdentifier(column, "Frame")) return NSNumber::numberWithBool(annotationPalette_->contains(key));
    return {};
}

void QzAnnoPaletteAsTable::willDisplayCell(NSTableView& /*tableView*/, NSCell& cell, NSTableColumn& forColumn,
                                           int32_t row) {
    auto* button = dynamic_cast<NSButtonCell*>(&cell);
    if (hasIdentifier(forColumn, "selectionstate") && button) button->setTransparent(row == maxPriority());
    if (hasIdentifier(forColumn, "Annotations")) {
        cell.setFont(NSFont::systemFontOfSize(kNameFontSize));
        cell.setStruckOut(isBelowPalette(row));
        const std::string name = isBelowPalette(row) ? cell.stringValue()->utf8() : std::string();
        cell.setAccessibilityLabel(name.empty() ? nullptr
                                                : NSString::stringWithUTF8String(name + ", not in the palette"));
    }
    if (hasIdentifier(forColumn, "Frame") && button) {
        button->setTitle(NSString::stringWithUTF8String(stringWithFormat("%i", {row})));
    }
}

void QzAnnoPaletteAsTable::setObjectValue(NSTableView& /*tableView*/, const Ref<NSObject>& value, NSTableColumn& column,
                                          int32_t row) {
    if (hasIdentifier(column, "selectionstate")) toggleRow(row);
    if (hasIdentifier(column, "Annotations")) renameRow(row, value);
    if (hasIdentifier(column, "Frame")) {
        NSApplication::sharedApplication().sendAction("toggleFrameAnno:", {}, keyOfRow(row));
    }
}

void QzAnnoPaletteAsTable::renameRow(int32_t row, const Ref<NSObject>& toName) {
    const auto name = std::dynamic_pointer_cast<NSString>(toName);
    const Ref<QzAnnoKey> key = keyOfRow(row);
    if (!name || !key || row >= maxPriority()) return;
    replaceAnnoNamed(*annotationPalette_, annotationPalette_->lookupAnno(key), name);
}

bool QzAnnoPaletteAsTable::shouldEditTableColumn(NSTableView& /*tableView*/, NSTableColumn& column, int32_t row) {
    NSLog("Should edit?\n");
    if (!hasIdentifier(column, "Annotations")) return true;
    if (isBelowPalette(row)) return false;
    change("editPrio", editPrio_, maxPriority() - row);
    editAnno({});
    return false;
}

void QzAnnoPaletteAsTable::tableViewSelectionDidChange(const NSNotification& notification) {
    const auto tableView = std::dynamic_pointer_cast<NSTableView>(notification.object);
    const int32_t selected = tableView ? tableView->selectedRow() : -1;
    // A key without an annotation can be neither edited nor deleted.
    const int32_t row = isBelowPalette(selected) ? -1 : selected;
    change("haveMouseSelected", haveMouseSelected_, row != -1);
    change("editPrio", editPrio_, maxPriority() - row);
    change("haveNonGlobalSelected", haveNonGlobalSelected_, editPrio_ > 0);
}

// What the text's selection carries

void QzAnnoPaletteAsTable::annotationChangeSelectionUpdate(const NSNotification& notification) {
    Ref<NSSet> immutable, selected, sparse;
    if (!getImmutableAnnotationKeys(notification.object, immutable, selected, sparse)) return;
    const bool wasUnderPalette = std::exchange(isSelectionUnderPalette_, true);
    if (wasUnderPalette && areEqualSets(immutable, frameSelection_) && areEqualSets(selected, currentSelection_) &&
        areEqualSets(sparse, shadedSelection_)) {
        return;
    }
    frameSelection_ = immutable;
    currentSelection_ = selected;
    shadedSelection_ = sparse;
    updateSelection();
}

void QzAnnoPaletteAsTable::toggleRow(int32_t row) {
    const Ref<QzAnnoKey> key = keyOfRow(row);
    if (!key) return;
    const Ref<NSSet> toggled = NSSet::setWithObject(key);
    const Ref<NSSet> changed =
        holds(currentSelection_, *key) ? difference(currentSelection_, toggled) : unionOf(currentSelection_, toggled);
    currentSelection_ = difference(changed, NSSet::setWithObject(annotationPalette_->lookupAnno({})->annokey()));
    updateSelection();
    if (outlets_.delegate)
        outlets_.delegate->sendChangeAnno(std::static_pointer_cast<QzAnnoPaletteAsTable>(shared_from_this()));
}

void QzAnnoPaletteAsTable::updateSelection() {
    if (!outlets_.tableView) return;
    outlets_.tableView->deselectAll({});
    outlets_.tableView->reloadData();
}

// Actions

void QzAnnoPaletteAsTable::newAnno(const Ref<NSObject>& /*sender*/) {
    const Ref<const QzAnno> anno = annotationPalette_ ? annotationPalette_->createAnno("NEW"_ns) : nullptr;
    const Ref<QzAnnoEditor> editor = outlets_.annoAsTable.lock();
    if (!anno || !editor) return;
    editor->setAnno(anno);
    editor->apply(shared_from_this());
}

void QzAnnoPaletteAsTable::editAnno(const Ref<NSObject>& /*sender*/) {
    const Ref<QzAnnoEditor> editor = outlets_.annoAsTable.lock();
    if (!annotationPalette_ || !editor) return;
    // Keep editing the current annotation, and show the user where.
    if (editor->isEditing() && editor->window()) return editor->window()->makeKeyAndOrderFront({});
    editor->setAnno(annotationPalette_->lookupAnno(annotationPalette_->annoKeyAtPriority(editPrio_)));
}

void QzAnnoPaletteAsTable::deleteAnno(const Ref<NSObject>& /*sender*/) {
    if (editPrio_ < 1 || !annotationPalette_) return;
    annotationPalette_->removeAnno(annotationPalette_->annoKeyAtPriority(editPrio_));
    if (outlets_.tableView) outlets_.tableView->deselectAll({});
    forgetRowSelection();
}

bool QzAnnoPaletteAsTable::mayChangePalette() const {
    const Ref<QzAnnoEditor> editor = outlets_.annoAsTable.lock();
    return !(editor && editor->isEditing()) && annotationPalette_ && annotationPalette_->editable();
}

bool QzAnnoPaletteAsTable::validateMenuItem(const NSMenuItem& item) {
    return mayChangePalette() && (item.action() != "deleteAnno:" || editPrio_ > 0);
}

Ref<NSMenu> QzAnnoPaletteAsTable::menuForRow(int32_t /*row*/, int32_t /*column*/) {
    return {};
}

}  // namespace qz
