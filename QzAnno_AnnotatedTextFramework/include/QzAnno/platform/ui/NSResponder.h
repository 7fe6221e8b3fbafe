#pragma once

#include <functional>
#include <map>
#include <string>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// Something that can be told to do things by name: a view, a window, a controller.
///
/// An action is named by its selector text ("changeAnno:") and handled by whoever has a handler registered for it. Used
/// on the thread of the user interface, as everything in this folder.
class NSResponder : public NSObject {
public:
    /// Performs an action; `sender` is who asks for it, and may be none.
    using ActionHandler = std::function<void(const Ref<NSObject>& sender)>;

    /// A handler that is registered again replaces the former one.
    void setHandler(const std::string& action, ActionHandler handler);
    /// Whether this responder has a handler; those that follow it do not count.
    virtual bool respondsTo(const std::string& action) const;
    /// False when there is no handler.
    virtual bool tryToPerform(const std::string& action, const Ref<NSObject>& sender);

    /// Whom an action is offered to next, besides what the window system gives. Not owned; none at the start.
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
