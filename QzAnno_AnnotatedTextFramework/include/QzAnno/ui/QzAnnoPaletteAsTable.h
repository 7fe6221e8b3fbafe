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

/// Shows one palette as a table: a row for each annotation, the highest priority first and the global annotation last,
/// with what the text selection carries, and drives everything that a user does to a palette.
///
/// Below them stand, struck out, the annotations that the selection carries and the palette does not have. They can be
/// switched off and on; they have no priority, and are neither dragged, renamed, edited nor deleted.
///
/// Columns "selectionstate", "Annotations" and "Frame". Observable: "palette", "haveMouseSelected",
/// "haveNonGlobalSelected" and "editPrio". Follows every notification of its palette. What the palette refuses changes
/// nothing.
class QzAnnoPaletteAsTable final : public NSResponder,
                                   public QzAnnoChanging,
                                   public NSKeyValueObserving,
                                   public NSTableViewDataSource,
                                   public NSTableViewDelegate,
                                   public MenuContextTableViewDelegate,
                                   public NSMenuValidation {
public:
    /// What the interface file connects; not owned but for the table view and its menu.
    struct Outlets {
        QLabel* DBGtext = nullptr;                ///< tells palettes apart; may be none
        Ref<MenuContextTableView> tableView;      ///< the only one that is needed
        Ref<NSMenu> menuForTable;                 ///< the table view's context menu
        WeakRef<QzAnnoEditor> annoAsTable;        ///< edits one annotation
        QzAnnotationManager* delegate = nullptr;  ///< as for `setManager`
    };

    /// Shows no palette, and has no outlets.
    static Ref<QzAnnoPaletteAsTable> init();
    ~QzAnnoPaletteAsTable() override;

    /// Becomes the table view's data source and delegate.
    void connectOutlets(const Outlets& outlets);
    /// Sends on what the user switches. Not owned, so it must be cleared before the manager dies; may be none.
    void setManager(QzAnnotationManager* manager) { outlets_.delegate = manager; }
    /// Readies the connected table view for drags and toggles.
    void awakeFromNib();

    /// None shows an empty table. The text's selection stays on show until it changes.
    void setAnnotationPalette(const Ref<QzAnnoPalette>& palette);
    Ref<QzAnnoPalette> palette() const override { return annotationPalette_; }
    /// The keys that are on for the text's selection, and those that the user has switched on since; none at the start.
    Ref<NSSet> selectedAnnoKeys() const override { return currentSelection_; }
    /// The sparse and the immutable keys that were reported last (AnnotationReporting.h); none at the start.
    ///@{
    const Ref<NSSet>& shadedSelection() const { return shadedSelection_; }
    const Ref<NSSet>& frameSelection() const { return frameSelection_; }
    ///@}

    /// The priority of the annotation that editing and deletion act on; one beyond the highest while no row is
    /// selected.
    int32_t editPrio() const { return editPrio_; }
    /// Whether the user has selected a row.
    bool haveMouseSelected() const { return haveMouseSelected_; }
    /// Whether `editPrio` is above 0, so also while no row is selected; false with a new palette and after a deletion.
    bool haveNonGlobalSelected() const { return haveNonGlobalSelected_; }

    /// Shows all rows anew, whatever the notification says.
    void reloadTable(const NSNotification& notification);
    /// Switches the row's annotation on or off for the selected text.
    void toggleRow(int32_t row);
    /// Deselects all rows and redraws them.
    void updateSelection();
    /// Takes over what the notification's object, a text view, reports of its selection.
    void annotationChangeSelectionUpdate(const NSNotification& notification);

    // Actions.
    /// Puts an annotation "NEW" on top of the palette and edits it.
    void newAnno(const Ref<NSObject>& sender);
    /// Edits the annotation at `editPrio`. While another is being edited, brings that one's editor to the front.
    void editAnno(const Ref<NSObject>& sender);
    /// Removes the annotation at `editPrio`, but never the global one.
    void deleteAnno(const Ref<NSObject>& sender);
    bool validateMenuItem(const NSMenuItem& item) override;
    /// Whether annotations may be made, edited and deleted: none is being edited, and the palette is unlocked.
    /// Observable as "mayChangePalette".
    bool mayChangePalette() const;
    Ref<NSMenu> menuForRow(int32_t row, int32_t column) override;

    // The table.
    int32_t numberOfRowsInTableView(NSTableView& tableView) override;
    Ref<NSObject> objectValueForTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) override;
    /// Column "selectionstate" switches the row's annotation, "Annotations" renames it, and "Frame" sends
    /// "toggleFrameAnno:" with its key along the responder chain; the value matters to the name only.
    void setObjectValue(NSTableView& tableView, const Ref<NSObject>& value, NSTableColumn& column,
                        int32_t row) override;
    bool writeRows(NSTableView& tableView, const std::vector<int32_t>& rows,
                   const Ref<NSPasteboard>& toPasteboard) override;
    uint32_t validateDrop(NSTableView& tableView, const Ref<NSPasteboard>& pasteboard, int32_t proposedRow,
                          NSTableViewDropOperation proposedDropOperation) override;
    /// The dragged annotations, in their order, come right below the nearest row above the place that is not dragged
    /// itself, or to the top where there is none.
    bool acceptDrop(NSTableView& tableView, const Ref<NSPasteboard>& pasteboard, int32_t row,
                    NSTableViewDropOperation dropOperation) override;
    void willDisplayCell(NSTableView& tableView, NSCell& cell, NSTableColumn& forColumn, int32_t row) override;
    /// A name is not edited in its row: the editor opens instead.
    bool shouldEditTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) override;
    bool shouldSelectTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/) override { return false; }
    void tableViewSelectionDidChange(const NSNotification& notification) override;

    std::string className() const override { return "QzAnnoPaletteAsTable"; }

private:
    QzAnnoPaletteAsTable();

    int32_t maxPriority() const { return annotationPalette_ ? annotationPalette_->maxPriority() : 0; }
    /// Null beyond the rows and without a palette.
    Ref<QzAnnoKey> keyOfRow(int32_t row) const;
    bool isBelowPalette(int32_t row) const { return row > maxPriority(); }
    /// The keys of no palette that the selection carries, by name.
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
