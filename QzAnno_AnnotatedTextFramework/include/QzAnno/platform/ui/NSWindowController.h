#pragma once

#include "QzAnno/platform/ui/NSWindow.h"

namespace qz {

/// Manages one window, which it owns.
class NSWindowController : public NSResponder {
public:
    /// Owned; null by default.
    ///@{
    const Ref<NSWindow>& window() const { return window_; }
    void setWindow(const Ref<NSWindow>& window) { window_ = window; }
    ///@}
    /// The document that the window belongs to; owned, null by default.
    ///@{
    const Ref<NSObject>& document() const { return document_; }
    void setDocument(const Ref<NSObject>& document) { document_ = document; }
    ///@}

    /// Whether there is a window.
    virtual bool isWindowLoaded() const { return window_ != nullptr; }
    /// Derived classes that load their window call this before; does nothing here.
    virtual void windowWillLoad() {}
    /// Called after the window has been loaded; does nothing here.
    virtual void windowDidLoad() {}
    /// Shows the window and makes it key, unless it is a panel that becomes key only if needed. Does nothing without a
    /// window.
    virtual void showWindow(const Ref<NSObject>& sender);

    std::string className() const override { return "NSWindowController"; }

private:
    Ref<NSWindow> window_;
    Ref<NSObject> document_;
};

}  // namespace qz
