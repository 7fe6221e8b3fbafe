#pragma once

#include <functional>
#include <map>
#include <string>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An object that performs named actions: a view, a window, a controller.
///
/// An action is named by its selector text ("changeAnno:") and performed by the responder that has a handler for it.
/// Like everything in this folder, use it on the user interface's thread only.
class NSResponder : public NSObject {
public:
    /// Performs an action for `sender`, which may be null.
    using ActionHandler = std::function<void(const Ref<NSObject>& sender)>;

    /// Replaces any handler registered for the action.
    void setHandler(const std::string& action, ActionHandler handler);
    /// Whether this responder itself has a handler.
    virtual bool respondsTo(const std::string& action) const;
    /// Returns false if there is no handler.
    virtual bool tryToPerform(const std::string& action, const Ref<NSObject>& sender);

    /// The responder that is offered an action next, in addition to the widget hierarchy. Not owned; null by default.
    ///@{
    Ref<NSResponder> nextResponder() const { return nextResponder_.lock(); }
    void setNextResponder(const Ref<NSResponder>& responder) { nextResponder_ = responder; }
    ///@}

    std::string className() const override { return "NSResponder"; }

private:
    std::map<std::string, ActionHandler> handlers_;
    WeakRef<NSResponder> nextResponder_;
};

}  // namespace qz
