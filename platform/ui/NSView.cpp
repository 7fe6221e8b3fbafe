#include "QzAnno/platform/ui/NSView.h"

#include <QPointer>
#include <QWidget>
#include <unordered_map>

#include "platform/ui/QtValues.h"

namespace qz {
namespace {

std::unordered_map<const QWidget*, NSResponder*>& responders() {
    static std::unordered_map<const QWidget*, NSResponder*> responders;
    return responders;
}

}  // namespace

struct NSView::State {
    QPointer<QWidget> widget;
    // The key in the table, even after the widget has been destroyed.
    const QWidget* key;
    QMetaObject::Connection destruction;
};

NSView::NSView(QWidget* widget) : state_(std::make_unique<State>()) {
    state_->widget = widget;
    state_->key = widget;
    if (!widget) return;
    responders()[widget] = this;
    state_->destruction =
        QObject::connect(widget, &QObject::destroyed, [key = state_->key] { responders().erase(key); });
}

NSView::~NSView() {
    QObject::disconnect(state_->destruction);
    const auto found = responders().find(state_->key);
    if (found != responders().end() && found->second == this) responders().erase(found);
}

Ref<NSView> NSView::viewWithWidget(QWidget* widget) {
    return Ref<NSView>(new NSView(widget));
}

QWidget* NSView::widget() const {
    return state_->widget;
}

NSResponder* NSView::responderOfWidget(const QWidget* widget) {
    const auto found = responders().find(widget);
    return found == responders().end() ? nullptr : found->second;
}

void NSView::setAccessibleName(const std::string& name) {
    if (widget()) widget()->setAccessibleName(toQt(name));
}

}  // namespace qz
