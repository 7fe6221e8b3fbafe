#pragma once

#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSUndoManager.h"
#include "platform/graphics/NSColor.h"
#include "platform/ui/NSView.h"

namespace qz {

class NSWindow;

/// Whom a window tells what happens to it.
class NSWindowDelegate {
public:
    virtual ~NSWindowDelegate() = default;
    /// Before the window closes, by the user or by `NSWindow::close`. The notification's object is the window.
    virtual void windowWillClose(const NSNotification& /*notification*/) {}
    /// The window has been minimised. The notification's object is the window.
    virtual void windowDidMiniaturize(const NSNotification& /*notification*/) {}
    /// On which undo and redo act while the window is key; none leaves the keys to the views.
    virtual Ref<NSUndoManager> windowWillReturnUndoManager(NSWindow& /*window*/) { return {}; }
};

/// The name in what the delegate gets. The notification centre does not post it.
///@{
inline const Ref<NSString> NSWindowWillCloseNotification = "NSWindowWillCloseNotification"_ns;
inline const Ref<NSString> NSWindowDidMiniaturizeNotification = "NSWindowDidMiniaturizeNotification"_ns;
///@}

/// A window: a widget without a parent. Owns the widget, and closes it when it dies.
class NSWindow : public NSView {
public:
    /// Takes the widget, out of its parent if it has one, with its size and title.
    static Ref<NSWindow> windowWithWidget(QWidget* widget);
    ~NSWindow() override;

    /// That of the widget, empty once it has gone; never none.
    ///@{
    Ref<NSString> title() const;
    void setTitle(const Ref<NSString>& title);
    ///@}
    /// Whether it has been shown and not hidden again; other windows may cover it.
    bool isVisible() const;
    /// Shows the window above the others and gives it the keys. No sender matters, here and below; it may be none.
    void makeKeyAndOrderFront(const Ref<NSObject>& sender);
    /// Shows the window without making it key.
    void orderFront(const Ref<NSObject>& sender);
    /// Hides the window, and tells nobody.
    void orderOut(const Ref<NSObject>& sender);
    /// Tells the delegate, then hides the window.
    void close();
    /// Draws at once.
    void display();

    /// None, as at the start: the window has the looks of the desktop.
    ///@{
    Ref<NSColor> backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(const Ref<NSColor>& color);
    ///@}

    /// Not owned; whoever is a delegate clears itself before it dies.
    ///@{
    void setDelegate(NSWindowDelegate* delegate) { delegate_ = delegate; }
    NSWindowDelegate* delegate() const { return delegate_; }
    ///@}
    /// The delegate's answer; none without one.
    Ref<NSUndoManager> undoManager();

    std::string className() const override { return "NSWindow"; }

protected:
    /// Owns the widget, which has no parent.
    explicit NSWindow(QWidget* widget);

private:
    class EventFilter;

    const std::unique_ptr<EventFilter> filter_;
    NSWindowDelegate* delegate_ = nullptr;
    Ref<NSColor> backgroundColor_;
};

/// An auxiliary window of the application.
class NSPanel final : public NSWindow {
public:
    /// As `NSWindow::windowWithWidget`.
    static Ref<NSPanel> panelWithWidget(QWidget* widget);

    /// Whether showing the panel leaves the focus where it is.
    ///@{
    bool becomesKeyOnlyIfNeeded() const;
    void setBecomesKeyOnlyIfNeeded(bool onlyIfNeeded);
    ///@}
    /// Whether the panel stays above document windows. A panel that shows goes on showing when it is set.
    ///@{
    bool isFloatingPanel() const;
    void setFloatingPanel(bool floats);
    ///@}

    std::string className() const override { return "NSPanel"; }

private:
    explicit NSPanel(QWidget* widget);
};

}  // namespace qz
