#pragma once

#include "QzAnno/platform/ui/NSWindowController.h"
#include "QzAnno/ui/QzAnnoEditor.h"
#include "QzAnno/ui/QzAnnoPaletteAsTable.h"
#include "QzAnno/ui/QzTextViewAnnoCategory.h"

namespace qz {

/// Looks after the floating annotation panel, of which there is one for the process: decides which palette it shows,
/// lets it follow the selections of text views, and sends the changes that the user makes there to a text view.
///
/// Needs the toolkit's application object. The panel's undo and redo act on its palette. Whether it was visible is kept
/// in the user defaults under "AnnoationPaletteVisible"; the colour under "App Background Color" becomes its
/// background.
class QzAnnotationManager final : public NSWindowController, public NSWindowDelegate {
public:
    /// Made on first use.
    static Ref<QzAnnotationManager> sharedAnnotationManager() { return init(); }
    /// The shared manager: the first call makes it and loads the panel.
    static Ref<QzAnnotationManager> init();
    /// A manager that is not the shared one, until it is shown: it then takes over panel, document and table, and the
    /// former one is let go of.
    static Ref<QzAnnotationManager> initWithWindow(const Ref<NSWindow>& window);
    ~QzAnnotationManager() override;

    /// None for a manager that is not the shared one, or whose interface file could not be loaded.
    ///@{
    const Ref<QzAnnoPaletteAsTable>& ptable() const { return ptable_; }
    const Ref<QzAnnoEditor>& editor() const { return editor_; }
    ///@}

    /// Lets the panel float, and shows it when the user defaults say that it was visible.
    void awakeFromNib();
    /// Whether this is the shared manager.
    bool isWindowLoaded() const override;
    /// Shows the panel.
    void windowDidLoad() override;
    /// Shows the panel, in the background colour of the user defaults, which are told that it is visible. A manager
    /// that is not the shared one becomes it.
    void showWindow(const Ref<NSObject>& sender) override;

    /// Shows the palette. False, and nothing changed, while a responder is bound and the panel shows another one.
    bool setAnnotationPalette(const Ref<QzAnnoPalette>& palette);
    /// Binds a text view or another `QzAnnoUsing`, which is not owned: changes go there from now on. False, and nothing
    /// changed, when the panel shows another palette, or the object cannot take changes.
    bool setResponder(const Ref<NSObject>& responder, const Ref<QzAnnoPalette>& paletteMatch);
    /// False when it is not the bound one.
    bool clearResponder(const Ref<NSObject>& responder);
    /// Sends "changeAnno:" to the bound responder, or else up the responder chain.
    void sendChangeAnno(const Ref<QzAnnoPaletteAsTable>& sender);

    /// Shows what the notification's object reports of its selection.
    void annotationChangeSelectionUpdate(const NSNotification& notification);
    /// Lets the panel follow a further notification, or no longer follow it. It must have a text view, or another
    /// object that reports its annotations, as object. No name stands for any, no object for all.
    ///@{
    void addSelectionChangeNotifier(const Ref<NSString>& name, const Ref<NSObject>& object);
    void removeSelectionChangeNotifier(const Ref<NSString>& name, const Ref<NSObject>& object);
    ///@}

    /// Tells the user defaults that the panel is not visible.
    void windowWillClose(const NSNotification& notification) override;
    /// Gives the keys back to the main window.
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
