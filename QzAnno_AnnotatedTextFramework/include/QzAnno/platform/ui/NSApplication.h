#pragma once

#include <memory>

#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/ui/NSWindow.h"

namespace qz {

/// The running application: who gets actions, and where one event ends and the next begins. The toolkit's application
/// object must exist before the first call and outlive the last.
class NSApplication final : public NSResponder {
public:
    /// Made with the first call; another one after the toolkit's application object has been exchanged for a new one.
    static NSApplication& sharedApplication();

    /// Asks the target; without one, whoever first has a handler along the chain: from the focused widget of the key
    /// window up to the window, its delegate, the same of the main window, the application and its delegate. False when
    /// nobody has.
    bool sendAction(const std::string& action, const Ref<NSResponder>& to, const Ref<NSObject>& from);

    /// The last responder of the chain; not owned.
    void setDelegate(const Ref<NSResponder>& delegate) { delegate_ = delegate; }

    /// The window of a document that was active last: no panel, dialog or menu. None when there is none.
    QWidget* mainWindow() const;

    /// Ends the undo manager's group with every event that the user makes. Not owned.
    void groupUndoByEvent(const Ref<NSUndoManager>& undoManager);

    std::string className() const override { return "NSApplication"; }
    ~NSApplication() override;

private:
    class Events;

    NSApplication();
    bool offer(QWidget* window, const std::string& action, const Ref<NSObject>& from);

    const std::unique_ptr<Events> events_;
    WeakRef<NSResponder> delegate_;
};

/// Whether the responder, or one that follows it, has performed the action.
bool performAlongChain(NSResponder* responder, const std::string& action, const Ref<NSObject>& sender);

}  // namespace qz
