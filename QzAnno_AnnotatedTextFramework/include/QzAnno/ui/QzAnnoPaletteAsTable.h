#pragma once

#include "QzAnno/platform/ui/NSKeyValueObserving.h"
#include "QzAnno/platform/ui/NSMenu.h"
#include "QzAnno/platform/ui/NSTableView.h"
#include "QzAnno/ui/MenuContextTableView.h"
#include "QzAnno/ui/QzAnnoChanging.h"

class QLabel;

namespace qz {

class QzAnnoEditor;
class QzAnnotationManager;

/// The pasteboard type of dragged rows: an array of row numbers.
inline const Ref<NSString> QzTaviAnnoPalettePboardType = "Tavi Annotation Selection Pasteboard"_ns;

/// Shows one palette as a table, with a row for each annotation from the highest priority down to the global
/// annotation, marks what the text selection carries, and performs everything that a user does to a palette.
///
/// Struck-out rows below them show annotations that the selection carries but the palette does not have. They can be
/// switched on and off; they have no priority, and cannot be dragged, renamed, edited or deleted.
///
/// The columns are "selectionstate", "Annotations" and "Frame". Observable properties are "palette",
/// "haveMouseSelected", "haveNonGlobalSelected" and "editPrio". Follows every notification of its palette. A change
/// that the palette refuses has no effect.
class QzAnnoPaletteAsTable final : public NSResponder,
                                   public QzAnnoChanging,
                                   public NSKeyValueObserving,
                                   public NSTableViewDataSource,
                                   public NSTableViewDelegate,
                                   public MenuContextTableViewDelegate,
                                   public NSMenuValidation {
public:
    /// Objects connected by the interface file. Only the table view and its menu are owned.
    struct Outlets {
        QLabel* DBGtext = nullptr;                ///< identifies the palette; may be null
        Ref<MenuContextTableView> tableView;      ///< the only one required
        Ref<NSMenu> menuForTable;                 ///< the table view's context menu
        WeakRef<QzAnnoEditor> annoAsTable;        ///< edits one annotation
        QzAnnotationManager* delegate = nullptr;  ///< as for `setManager`
    };

    /// Shows no palette and has no outlets.
    static Ref<QzAnnoPaletteAsTable> init();
    ~QzAnnoPaletteAsTable() override;

    /// Becomes the table view's data source and delegate.
    void connectOutlets(const Outlets& outlets);
    /// The manager sends on the user's changes. Not owned: clear it before the manager is destroyed. May be null.
    void setManager(QzAnnotationManager* manager) { outlets_.delegate = manager; }
    /// Sets the connected table view up for drags and toggles.
    void awakeFromNib();

    /// Null shows an empty table. The text selection stays shown until it changes.
    void setAnnotationPalette(const Ref<QzAnnoPalette>& palette);
    Ref<QzAnnoPalette> palette() const override { return annotationPalette_; }
    /// The keys that are on for the text selection or have since been switched on by the user; null at first.
    Ref<NSSet> selectedAnnoKeys() const override { return currentSelection_; }
    /// The sparse and the immutable keys reported last (AnnotationReporting.h); null at first.
    ///@{
    const Ref<NSSet>& shadedSelection() const { return shadedSelection_; }
    const Ref<NSSet>& frameSelection() const { return frameSelection_; }
    ///@}

    /// The priority of the annotation to edit or delete; one above the highest while no row is selected.
    int32_t editPrio() const { return editPrio_; }
    /// Whether the user has selected a row.
    bool haveMouseSelected() const { return haveMouseSelected_; }
    /// Whether `editPrio` is above 0, which includes having no row selected; false after a new palette or a deletion.
    bool haveNonGlobalSelected() const { return haveNonGlobalSelected_; }

    /// Reloads all rows; the notification is ignored.
    void reloadTable(const NSNotification& notification);
    /// Switches the row's annotation on or off for the selected text.
    void toggleRow(int32_t row);
    /// Deselects all rows and redraws them.
    void updateSelection();
    /// Shows what the notification's object, a text view, reports for its selection.
    void annotationChangeSelectionUpdate(const NSNotification& notification);

    // Actions.
    /// Adds an annotation "NEW" on top of the palette and opens it in the editor.
    void newAnno(const Ref<NSObject>& sender);
    /// Opens the annotation at `editPrio` in the editor. If another is being edited, brings the editor to the front
    /// instead.
    void editAnno(const Ref<NSObject>& sender);
    /// Removes the annotation at `editPrio`, but never the global one.
    void deleteAnno(const Ref<NSObject>& sender);
    bool validateMenuItem(const NSMenuItem& item) override;
    /// Whether annotations may be added, edited and deleted: the palette is unlocked and no annotation is being edited.
    /// Observable as "mayChangePalette".
    bool mayChangePalette() const;
    Ref<NSMenu> menuForRow(int32_t row, int32_t column) override;

    // The table.
    int32_t numberOfRowsInTableView(NSTableView& tableView) override;
    Ref<NSObject> objectValueForTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) override;
    /// Column "selectionstate" toggles the row's annotation, "Annotations" renames it to the value, and "Frame" sends
    /// "toggleFrameAnno:" with its key along the responder chain.
    void setObjectValue(NSTableView& tableView, const Ref<NSObject>& value, NSTableColumn& column,
                        int32_t row) override;
    bool writeRows(NSTableView& tableView, const std::vector<int32_t>& rows,
                   const Ref<NSPasteboard>& toPasteboard) override;
    uint32_t validateDrop(NSTableView& tableView, const Ref<NSPasteboard>& pasteboard, int32_t proposedRow,
                          NSTableViewDropOperation proposedDropOperation) override;
    /// Moves the dragged annotations, in order, right below the nearest row above the drop that is not itself dragged,
    /// or to the top.
    bool acceptDrop(NSTableView& tableView, const Ref<NSPasteboard>& pasteboard, int32_t row,
                    NSTableViewDropOperation dropOperation) override;
    void willDisplayCell(NSTableView& tableView, NSCell& cell, NSTableColumn& forColumn, int32_t row) override;
    /// Opens the editor instead of editing a name in its row.
    bool shouldEditTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) override;
    bool shouldSelectTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) override { return false; }
    void tableViewSelectionDidChange(const NSNotification& notification) override;

    std::string className() const override { return "QzAnnoPaletteAsTable"; }

private:
    QzAnnoPaletteAsTable();

    int32_t maxPriority() const { return annotationPalette_ ? annotationPalette_->maxPriority() : 0; }
    /// Null if there is no such row or no palette.
    Ref<QzAnnoKey> keyOfRow(int32_t row) const;
    bool isBelowPalette(int32_t row) const { return row > maxPriority(); }
    /// The keys that the selection carries and no palette has, by name.
    std::vector<Ref<QzAnnoKey>> keysWithoutAnnotation() const;
    int32_t stateOfRow(int32_t row, const QzAnnoKey& key) const;
    void renameRow(int32_t row, const Ref<NSObject>& toName);
    void forgetRowSelection();
    void announceMayChange();
    void moveBelow(const Ref<QzAnnoKey>& anchor, const std::vector<Ref<QzAnnoKey>>& keys);
    void moveToTop(const std::vector<Ref<QzAnnoKey>>& keys);

    Outlets outlets_;
    Ref<QzAnnoPalette> annotationPalette_;
    Ref<NSSet> currentSelection_;
    Ref<NSSet> shadedSelection_;
    Ref<NSSet> frameSelection_;
    // Whether the sets were reported while this palette was shown.
    bool isSelectionUnderPalette_ = false;
    int32_t editPrio_ = 0;
    bool haveMouseSelected_ = false;
    bool haveNonGlobalSelected_ = false;
};

}  // namespace qz
