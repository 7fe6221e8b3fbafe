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
    virtual void windowWillClose(const NSNotification& /*notification*/) {}
    virtual void windowDidMiniaturize(const NSNotification& /*notification*/) {}
    /// On which undo and redo act while the window is key; none leaves the keys to the views.
    virtual Ref<NSUndoManager> windowWillReturnUndoManager(NSWindow& /*window*/) { return {}; }
};

inline const Ref<NSString> NSWindowWillCloseNotification = "NSWindowWillCloseNotification"_ns;
inline const Ref<NSString> NSWindowDidMiniaturizeNotification = "NSWindowDidMiniaturizeNotification"_ns;

/// A window: a widget without a parent. Owns the widget, and closes it when it dies.
class NSWindow : public NSView {
public:
    /// Takes the widget, out of its parent if it has one, with its size and title.
    static Ref<NSWindow> windowWithWidget(QWidget* widget);
    ~NSWindow() override;

    Ref<NSString> title() const;
    void setTitle(const Ref<NSString>& title);
    bool isVisible() const;
    void makeKeyAndOrderFront(const Ref<NSObject>& sender);
    /// Shows the window without making it key.
    void orderFront(const Ref<NSObject>& sender);
    void orderOut(const Ref<NSObject>& sender);
    /// Tells the delegate, then hides the window.
    void close();
    /// Draws at once.
    void display();

    /// None until one is set: the window then has the looks of the desktop.
    Ref<NSColor> backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(const Ref<NSColor>& color);

    /// Not owned; whoever is a delegate clears itself before it dies.
    void setDelegate(NSWindowDelegate* delegate) { delegate_ = delegate; }
    NSWindowDelegate* delegate() const { return delegate_; }
    Ref<NSUndoManager> undoManager();

    std::string className() const override { return "NSWindow"; }

protected:
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
    static Ref<NSPanel> panelWithWidget(QWidget* widget);

    /// Whether showing the panel leaves the focus where it is.
    bool becomesKeyOnlyIfNeeded() const;
    void setBecomesKeyOnlyIfNeeded(bool onlyIfNeeded);
    /// Whether the panel stays above document windows.
    bool isFloatingPanel() const;
    void setFloatingPanel(bool floats);

    std::string className() const override { return "NSPanel"; }

private:
    explicit NSPanel(QWidget* widget);
};

}  // namespace qz
