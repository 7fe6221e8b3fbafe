#include "QzAnno/platform/ui/NSApplication.h"

#include <QApplication>
#include <QPointer>
#include <QWidget>
#include <vector>

#include "platform/ui/AlertBox.h"

namespace qz {
namespace {

bool isDocumentWindow(const QWidget* window) {
    const Qt::WindowType type = window->windowType();
    return type == Qt::Window || type == Qt::Widget;
}

bool beginsAnEvent(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::KeyPress:
        case QEvent::InputMethod:
        case QEvent::Drop:
        case QEvent::ContextMenu:
        case QEvent::Shortcut:
        case QEvent::Wheel:
            return true;
        default:
            return false;
    }
}

}  // namespace

/// Watches the application's events. Closes the undo group of one event when the next begins, which to the user is the
/// same as when it ends.
class NSApplication::Events final : public QObject {
public:
    Events() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::WindowActivate) noteActivation(object);
        if (beginsAnEvent(event->type())) endEvent();
        return false;
    }

    void endEvent() {
        std::erase_if(undoManagers, [](const WeakRef<NSUndoManager>& undo) { return undo.expired(); });
        const auto managers = undoManagers;
        for (const WeakRef<NSUndoManager>& manager : managers) {
            if (const Ref<NSUndoManager> undo = manager.lock()) undo->endEvent();
        }
    }

    void noteActivation(QObject* object) {
        auto* window = qobject_cast<QWidget*>(object);
        if (window && window->isWindow() && isDocumentWindow(window)) mainWindow = window;
    }

    QPointer<QWidget> mainWindow;
    std::vector<WeakRef<NSUndoManager>> undoManagers;
};

NSApplication::NSApplication() : events_(std::make_unique<Events>()) {
    setCriticalAlertHook(showAlertBox);
}
NSApplication::~NSApplication() = default;

NSApplication& NSApplication::sharedApplication() {
    // Lives as long as the toolkit's application, or the application's end would call a destroyed event filter.
    static QPointer<QApplication> application;
    static Ref<NSApplication> shared;
    if (!shared || application != qApp) {
        shared.reset(new NSApplication);
        application = qApp;
    }
    return *shared;
}

QWidget* NSApplication::mainWindow() const {
    if (events_->mainWindow && events_->mainWindow->isVisible()) return events_->mainWindow;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && isDocumentWindow(window)) return window;
    }
    return nullptr;
}

bool performAlongChain(NSResponder* responder, const std::string& action, const Ref<NSObject>& sender) {
    // Ends a responder chain that forms a ring by mistake.
    constexpr int kRespondersMax = 64;
    Ref<NSResponder> kept;
    for (int i = 0; responder && i < kRespondersMax; ++i) {
        if (responder->tryToPerform(action, sender)) return true;
        kept = responder->nextResponder();
        responder = kept.get();
    }
    return false;
}

bool NSApplication::offer(QWidget* window, const std::string& action, const Ref<NSObject>& from) {
    if (!window) return false;
    QWidget* focused = window->focusWidget();
    for (QWidget* widget = focused ? focused : window; widget; widget = widget->parentWidget()) {
        if (performAlongChain(NSView::responderOfWidget(widget), action, from)) return true;
        if (widget->isWindow()) break;
    }
    const auto* asWindow = dynamic_cast<const NSWindow*>(NSView::responderOfWidget(window));
    auto* delegate = asWindow ? dynamic_cast<NSResponder*>(asWindow->delegate()) : nullptr;
    return performAlongChain(delegate, action, from);
}

bool NSApplication::sendAction(const std::string& action, const Ref<NSResponder>& to, const Ref<NSObject>& from) {
    if (to) return to->tryToPerform(action, from);
    QWidget* keyWindow = QApplication::activeWindow();
    QWidget* mainWindow = this->mainWindow();
    if (offer(keyWindow, action, from)) return true;
    if (mainWindow != keyWindow && offer(mainWindow, action, from)) return true;
    if (performAlongChain(this, action, from)) return true;
    const Ref<NSResponder> delegate = delegate_.lock();
    return performAlongChain(delegate.get(), action, from);
}

void NSApplication::groupUndoByEvent(const Ref<NSUndoManager>& undoManager) {
    if (!undoManager) return;
    for (const WeakRef<NSUndoManager>& known : events_->undoManagers) {
        if (known.lock() == undoManager) return;
    }
    events_->undoManagers.push_back(undoManager);
}

}  // namespace qz
