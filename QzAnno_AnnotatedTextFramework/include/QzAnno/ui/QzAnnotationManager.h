#pragma once

#include "QzAnno/platform/ui/NSWindowController.h"
#include "QzAnno/ui/QzAnnoEditor.h"
#include "QzAnno/ui/QzAnnoPaletteAsTable.h"
#include "QzAnno/ui/QzTextViewAnnoCategory.h"

namespace qz {

/// Manages the process's floating annotation panel: decides which palette it shows, lets it follow the selections of
/// text views, and sends the user's changes to a text view.
///
/// Needs the toolkit's application object. The panel's undo and redo act on its palette. The user defaults store its
/// visibility under "AnnoationPaletteVisible" and supply its background under "App Background Color".
class QzAnnotationManager final : public NSWindowController, public NSWindowDelegate {
public:
    /// Made on first use.
    static Ref<QzAnnotationManager> sharedAnnotationManager() { return init(); }
    /// The shared manager: the first call makes it and loads the panel.
    static Ref<QzAnnotationManager> init();
    /// Makes a manager that is not the shared one. When shown, it becomes the shared one and takes over panel, document
    /// and table.
    static Ref<QzAnnotationManager> initWithWindow(const Ref<NSWindow>& window);
    ~QzAnnotationManager() override;

    /// Null if this is not the shared manager or its interface file could not be loaded.
    ///@{
    const Ref<QzAnnoPaletteAsTable>& ptable() const { return ptable_; }
    const Ref<QzAnnoEditor>& editor() const { return editor_; }
    ///@}

    /// Lets the panel float, and shows it if the user defaults say that it was visible.
    void awakeFromNib();
    /// Whether this is the shared manager.
    bool isWindowLoaded() const override;
    /// Shows the panel.
    void windowDidLoad() override;
    /// Shows the panel in the background colour of the user defaults and records there that it is visible. Makes this
    /// manager the shared one.
    void showWindow(const Ref<NSObject>& sender) override;

    /// Shows the palette. Returns false and does nothing if a responder is bound and the panel shows another palette.
    bool setAnnotationPalette(const Ref<QzAnnoPalette>& palette);
    /// Binds a text view or another `QzAnnoUsing`, which then receives the changes; not owned. Returns false and does
    /// nothing if the panel shows another palette or the object cannot take changes.
    bool setResponder(const Ref<NSObject>& responder, const Ref<QzAnnoPalette>& paletteMatch);
    /// Returns false if it is not the bound responder.
    bool clearResponder(const Ref<NSObject>& responder);
    /// Sends "changeAnno:" to the bound responder, or else up the responder chain.
    void sendChangeAnno(const Ref<QzAnnoPaletteAsTable>& sender);

    /// Shows what the notification's object reports for its selection.
    void annotationChangeSelectionUpdate(const NSNotification& notification);
    /// Adds or removes a notification that the panel follows. Its object must be a text view or another object that
    /// reports its annotations. A null name matches any notification, a null object any object.
    ///@{
    void addSelectionChangeNotifier(const Ref<NSString>& name, const Ref<NSObject>& object);
    void removeSelectionChangeNotifier(const Ref<NSString>& name, const Ref<NSObject>& object);
    ///@}

    /// Records in the user defaults that the panel is not visible.
    void windowWillClose(const NSNotification& notification) override;
    /// Makes the main window key again.
    bool cancelOperation(NSWindow& window) override;
    Ref<NSUndoManager> windowWillReturnUndoManager(NSWindow& window) override;

    std::string className() const override { return "QzAnnotationManager"; }

private:
    QzAnnotationManager() = default;

    void loadInterface();
    void observeSelections();
    void adoptSharedRole();
    void saveVisible(bool isVisible) const;

    Ref<QzAnnoPaletteAsTable> ptable_;
    Ref<QzAnnoEditor> editor_;
    WeakRef<NSObject> explicitResponder_;
};

}  // namespace qz
