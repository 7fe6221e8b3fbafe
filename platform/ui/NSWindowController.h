#pragma once

#include "platform/ui/NSWindow.h"

namespace qz {

/// Looks after one window, which it owns.
class NSWindowController : public NSResponder {
public:
    const Ref<NSWindow>& window() const { return window_; }
    void setWindow(const Ref<NSWindow>& window) { window_ = window; }
    /// What the window belongs to; owned.
    const Ref<NSObject>& document() const { return document_; }
    void setDocument(const Ref<NSObject>& document) { document_ = document; }

    virtual bool isWindowLoaded() const { return window_ != nullptr; }
    virtual void windowWillLoad() {}
    virtual void windowDidLoad() {}
    virtual void showWindow(const Ref<NSObject>& sender);

    std::string className() const override { return "NSWindowController"; }

private:
    Ref<NSWindow> window_;
    Ref<NSObject> document_;
};

}  // namespace qz
