#pragma once

#include "QzAnno/platform/ui/NSWindow.h"

namespace qz {

/// Looks after one window, which it owns.
class NSWindowController : public NSResponder {
public:
    /// Owned; none at the start.
    ///@{
    const Ref<NSWindow>& window() const { return window_; }
    void setWindow(const Ref<NSWindow>& window) { window_ = window; }
    ///@}
    /// What the window belongs to; owned, and none at the start.
    ///@{
    const Ref<NSObject>& document() const { return document_; }
    void setDocument(const Ref<NSObject>& document) { document_ = document; }
    ///@}

    /// Whether there is a window.
    virtual bool isWindowLoaded() const { return window_ != nullptr; }
    /// For derived classes that load their window, which call it before; does nothing here.
    virtual void windowWillLoad() {}
    /// For whoever has loaded the window; does nothing here.
    virtual void windowDidLoad() {}
    /// Shows the window and gives it the keys; a panel that becomes key only if needed does not get them. Does nothing
    /// without a window.
    virtual void showWindow(const Ref<NSObject>& sender);

    std::string className() const override { return "NSWindowController"; }

private:
    Ref<NSWindow> window_;
    Ref<NSObject> document_;
};

}  // namespace qz
