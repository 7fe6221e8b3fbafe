#pragma once

#include <memory>

#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/ui/NSWindow.h"

namespace qz {

/// The running application: routes actions and separates events. The toolkit's application object must exist before the
/// first call and outlive the last.
class NSApplication final : public NSResponder {
public:
    /// Made on first use, and again after the toolkit's application object has been replaced.
    static NSApplication& sharedApplication();

    /// Sends the action to the target or, if that is null, to the first responder with a handler along the chain: the
    /// focused widget of the key window and its ancestors up to the window, the window's delegate, the same for the
    /// main window, the application and its delegate. Returns false if no responder has a handler.
    bool sendAction(const std::string& action, const Ref<NSResponder>& to, const Ref<NSObject>& from);

    /// The last responder of the chain; not owned.
    void setDelegate(const Ref<NSResponder>& delegate) { delegate_ = delegate; }

    /// The document window that was active last, never a panel, dialog or menu; null if there is none.
    QWidget* mainWindow() const;

    /// Ends the undo manager's group after every user event. Not owned.
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

/// Whether the responder, or one after it in the chain, has performed the action.
bool performAlongChain(NSResponder* responder, const std::string& action, const Ref<NSObject>& sender);

}  // namespace qz
