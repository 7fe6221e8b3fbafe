#include "QzAnno/platform/ui/NSWindow.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <QWidget>
#include <QWindow>
#include <algorithm>

#include "QzAnno/platform/ui/NSApplication.h"
#include "platform/ui/QtValues.h"
#include "platform/ui/WindowFrames.h"

namespace qz {

/// Filters the events of a window's widget and the keys of all widgets in it.
class NSWindow::EventFilter final : public QObject {
public:
    explicit EventFilter(NSWindow& window) : window_(window) {}

    bool eventFilter(QObject* object, QEvent* event) override {
        if (object != window_.widget()) return false;
        switch (event->type()) {
            case QEvent::Close:
                if (window_.delegate_)
                    window_.delegate_->windowWillClose({NSWindowWillCloseNotification, refTo(window_), {}});
                return false;
            case QEvent::WindowStateChange:
                if (window_.delegate_ && window_.widget()->isMinimized())
                    window_.delegate_->windowDidMiniaturize({NSWindowDidMiniaturizeNotification, refTo(window_), {}});
                return false;
            case QEvent::Hide:
                if (!event->spontaneous()) passKeysOn(*window_.widget());
                return false;
            case QEvent::WindowDeactivate:
                window_.didResignKey();
                return false;
            case QEvent::ShortcutOverride:
            case QEvent::KeyPress:
                return handleKey(*static_cast<QKeyEvent*>(event));
            default:
                return false;
        }
    }

private:
    /// Handles keys that no view in the window has used.
    bool handleKey(QKeyEvent& event) {
        return handleUndo(event) || (event.type() == QEvent::KeyPress && (handleEscape(event) || handleReturn(event)));
    }

    bool handleEscape(const QKeyEvent& event) {
        if (!event.matches(QKeySequence::Cancel)) return false;
        if (window_.delegate_ && window_.delegate_->cancelOperation(window_)) return true;
        if (!dynamic_cast<NSPanel*>(&window_)) return false;
        window_.close();
        return true;
    }

    /// As in a dialog, clicks the focused button, or else the default one.
    bool handleReturn(const QKeyEvent& event) {
        if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) return false;
        const auto buttons = window_.widget()->findChildren<QPushButton*>();
        const auto byDefault = std::ranges::find_if(buttons, &QPushButton::isDefault);
        if (byDefault == buttons.end()) return false;
        auto* focused = qobject_cast<QPushButton*>(window_.widget()->focusWidget());
        (focused ? focused : *byDefault)->click();
        return true;
    }

    bool handleUndo(QKeyEvent& event) {
        const bool isUndo = event.matches(QKeySequence::Undo);
        if (!isUndo && !event.matches(QKeySequence::Redo)) return false;
        const Ref<NSUndoManager> undo = window_.undoManager();
        if (!undo) return false;
        event.accept();
        if (event.type() == QEvent::KeyPress) isUndo ? undo->undo() : undo->redo();
        return true;
    }

    NSWindow& window_;
};

NSWindow::NSWindow(QWidget* widget) : NSView(widget), filter_(std::make_unique<EventFilter>(*this)) {
    if (widget) widget->installEventFilter(filter_.get());
}

NSWindow::~NSWindow() {
    delete widget();
}

Ref<NSWindow> NSWindow::windowWithWidget(QWidget* widget) {
    if (widget) widget->setParent(nullptr, Qt::Window);
    return Ref<NSWindow>(new NSWindow(widget));
}

Ref<NSString> NSWindow::title() const {
    return widget() ? fromQt(widget()->windowTitle()) : NSString::string();
}

void NSWindow::setTitle(const Ref<NSString>& title) {
    if (widget()) widget()->setWindowTitle(toQt(*title));
}

bool NSWindow::isVisible() const {
    return widget() && widget()->isVisible();
}

void NSWindow::makeKeyAndOrderFront(const Ref<NSObject>& /*sender*/) {
    if (!widget()) return;
    widget()->show();
    widget()->raise();
    widget()->activateWindow();
}

void NSWindow::orderFront(const Ref<NSObject>& /*sender*/) {
    if (!widget()) return;
    widget()->show();
    widget()->raise();
}

void NSWindow::orderOut(const Ref<NSObject>& /*sender*/) {
    if (widget()) widget()->hide();
}

void NSWindow::close() {
    if (widget()) widget()->close();
}

void NSWindow::display() {
    if (widget()) widget()->repaint();
}

void NSWindow::setFrameAutosaveName(const std::string& name) {
    if (widget()) keepFrame(*widget(), name);
}

void NSWindow::setBackgroundColor(const Ref<NSColor>& color) {
    backgroundColor_ = color;
    if (!widget()) return;
    QPalette palette;
    if (color) palette.setColor(QPalette::Window, toQt(*color));
    widget()->setPalette(palette);
    widget()->setAutoFillBackground(color != nullptr);
}

Ref<NSUndoManager> NSWindow::undoManager() {
    return delegate_ ? delegate_->windowWillReturnUndoManager(*this) : nullptr;
}

NSPanel::NSPanel(QWidget* widget) : NSWindow(widget) {}

Ref<NSPanel> NSPanel::panelWithWidget(QWidget* widget) {
    if (widget) widget->setParent(nullptr, Qt::Tool);
    return Ref<NSPanel>(new NSPanel(widget));
}

bool NSPanel::becomesKeyOnlyIfNeeded() const {
    return widget() && widget()->testAttribute(Qt::WA_ShowWithoutActivating);
}

void NSPanel::setBecomesKeyOnlyIfNeeded(bool onlyIfNeeded) {
    if (!widget()) return;
    widget()->setAttribute(Qt::WA_ShowWithoutActivating, onlyIfNeeded);
    widget()->setWindowFlag(Qt::WindowDoesNotAcceptFocus, onlyIfNeeded);
}

void NSPanel::makeKeyAndOrderFront(const Ref<NSObject>& sender) {
    if (!widget()) return;
    prepareToShow(*widget(), isFloating_);
    // The toolkit does not activate a window with this flag; the widget keeps the flag and restores it.
    widget()->windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
    NSWindow::makeKeyAndOrderFront(sender);
}

void NSPanel::orderFront(const Ref<NSObject>& sender) {
    if (widget()) prepareToShow(*widget(), isFloating_);
    NSWindow::orderFront(sender);
}

void NSPanel::didResignKey() {
    if (widget()->windowHandle() && becomesKeyOnlyIfNeeded())
        widget()->windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, true);
}

}  // namespace qz
