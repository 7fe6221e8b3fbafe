#pragma once

#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/ui/NSView.h"

namespace qz {

class NSWindow;

/// Receives a window's events.
class NSWindowDelegate {
public:
    virtual ~NSWindowDelegate() = default;
    /// Called before the window closes, by the user or by `NSWindow::close`. The notification's object is the window.
    virtual void windowWillClose(const NSNotification& /*notification*/) {}
    /// Called after the window has been minimised. The notification's object is the window.
    virtual void windowDidMiniaturize(const NSNotification& /*notification*/) {}
    /// Returns the manager for undo and redo while the window is key; null leaves their keys to the views.
    virtual Ref<NSUndoManager> windowWillReturnUndoManager(NSWindow& /*window*/) { return {}; }
    /// Called for Escape if no view uses it. If it returns false, a panel closes, and any other window passes the key
    /// on.
    virtual bool cancelOperation(NSWindow& /*window*/) { return false; }
};

/// The names of the notifications that the delegate receives. They are not posted to the notification centre.
///@{
inline const Ref<NSString> NSWindowWillCloseNotification = "NSWindowWillCloseNotification"_ns;
inline const Ref<NSString> NSWindowDidMiniaturizeNotification = "NSWindowDidMiniaturizeNotification"_ns;
///@}

/// A window: a widget without a parent. Owns the widget and closes it when destroyed.
class NSWindow : public NSView {
public:
    /// Takes the widget with its size and title, removing it from its parent if it has one.
    static Ref<NSWindow> windowWithWidget(QWidget* widget);
    ~NSWindow() override;

    /// The widget's title, empty once the widget has been destroyed; never null.
    ///@{
    Ref<NSString> title() const;
    void setTitle(const Ref<NSString>& title);
    ///@}
    /// Whether the window is shown, even if other windows cover it.
    bool isVisible() const;
    /// Shows the window above the others and makes it key. Here and below, the sender is ignored and may be null.
    virtual void makeKeyAndOrderFront(const Ref<NSObject>& sender);
    /// Shows the window without making it key.
    virtual void orderFront(const Ref<NSObject>& sender);
    /// Hides the window without telling the delegate.
    void orderOut(const Ref<NSObject>& sender);
    /// Tells the delegate, then hides the window.
    void close();
    /// Redraws at once.
    void display();
    /// Saves the window's position and size in the user defaults, as "NSWindow Frame NAME". A panel returns there when
    /// it is next shown, if the screen still exists.
    void setFrameAutosaveName(const std::string& name);

    /// Null, the default, means the desktop's background.
    ///@{
    Ref<NSColor> backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(const Ref<NSColor>& color);
    ///@}

    /// Not owned; clear it before it is destroyed.
    ///@{
    void setDelegate(NSWindowDelegate* delegate) { delegate_ = delegate; }
    NSWindowDelegate* delegate() const { return delegate_; }
    ///@}
    /// The delegate's undo manager; null without a delegate.
    Ref<NSUndoManager> undoManager();

    std::string className() const override { return "NSWindow"; }

protected:
    /// Takes ownership of the widget, which must have no parent.
    explicit NSWindow(QWidget* widget);
    /// Called after another window has become key.
    virtual void didResignKey() {}

private:
    class EventFilter;

    const std::unique_ptr<EventFilter> filter_;
    NSWindowDelegate* delegate_ = nullptr;
    Ref<NSColor> backgroundColor_;
};

/// An auxiliary window of the application. When it closes, the window that it was shown above becomes key.
class NSPanel final : public NSWindow {
public:
    /// As `NSWindow::windowWithWidget`.
    static Ref<NSPanel> panelWithWidget(QWidget* widget);

    /// Whether the key window stays key when the panel is shown or clicked; `makeKeyAndOrderFront` still makes the
    /// panel key. Set it before showing the panel.
    ///@{
    bool becomesKeyOnlyIfNeeded() const;
    void setBecomesKeyOnlyIfNeeded(bool onlyIfNeeded);
    ///@}
    /// Whether the panel stays above the document window that was main when it was shown. True by default.
    void setFloatingPanel(bool floats) { isFloating_ = floats; }
    void makeKeyAndOrderFront(const Ref<NSObject>& sender) override;
    void orderFront(const Ref<NSObject>& sender) override;

    std::string className() const override { return "NSPanel"; }

protected:
    void didResignKey() override;

private:
    explicit NSPanel(QWidget* widget);

    bool isFloating_ = true;
};

}  // namespace qz
