#pragma once

#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/ui/NSView.h"

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
    /// Escape, where no view has a use for it. False: a panel closes, other windows leave the key to others.
    virtual bool cancelOperation(NSWindow& /*window*/) { return false; }
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
    virtual void makeKeyAndOrderFront(const Ref<NSObject>& sender);
    /// Shows the window without making it key.
    virtual void orderFront(const Ref<NSObject>& sender);
    /// Hides the window, and tells nobody.
    void orderOut(const Ref<NSObject>& sender);
    /// Tells the delegate, then hides the window.
    void close();
    /// Draws at once.
    void display();
    /// Keeps in the user's defaults, as "NSWindow Frame NAME", where the window stands and how large it is. A panel
    /// that is shown next time stands there again, if the screens are still there.
    void setFrameAutosaveName(const std::string& name);

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
    /// Another window has the keys now.
    virtual void didResignKey() {}

private:
    class EventFilter;

    const std::unique_ptr<EventFilter> filter_;
    NSWindowDelegate* delegate_ = nullptr;
    Ref<NSColor> backgroundColor_;
};

/// An auxiliary window of the application. When it goes, its keys go to the window that it was shown above.
class NSPanel final : public NSWindow {
public:
    /// As `NSWindow::windowWithWidget`.
    static Ref<NSPanel> panelWithWidget(QWidget* widget);

    /// Whether neither showing the panel nor clicks in it take the keys from the window that has them;
    /// `makeKeyAndOrderFront` does. Set it before the panel is shown.
    ///@{
    bool becomesKeyOnlyIfNeeded() const;
    void setBecomesKeyOnlyIfNeeded(bool onlyIfNeeded);
    ///@}
    /// Whether the panel stays above document windows: above the main one when it is shown. Panels do from the start.
    ///@{
    bool isFloatingPanel() const { return isFloating_; }
    void setFloatingPanel(bool floats) { isFloating_ = floats; }
    ///@}
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
