#include "QzAnno/platform/ui/NSTextViewWidget.h"

#include "platform/ui/TextWidget.h"

namespace qz {
namespace {

std::map<std::string, NSTextViewWidget::Action>& actionsOfTextViews() {
    static std::map<std::string, NSTextViewWidget::Action> actions;
    return actions;
}

}  // namespace

NSTextViewWidget::ActionRegistration::ActionRegistration(const std::string& action, Action perform) {
    actionsOfTextViews()[action] = std::move(perform);
}

NSTextViewWidget::NSTextViewWidget(const Ref<NSTextView>& textView, TextWidget* widget)
    : NSView(widget), textView_(textView) {
    using Command = void (TextWidget::*)();
    const std::pair<const char*, Command> commands[] = {
        {"cut:", &TextWidget::cut},     {"copy:", &TextWidget::copy},           {"paste:", &TextWidget::paste},
        {"undo:", &TextWidget::undo},   {"selectAll:", &TextWidget::selectAll}, {"redo:", &TextWidget::redo},
        {"delete:", &TextWidget::clear}};
    for (const auto& [action, command] : commands) {
        setHandler(action, [this, perform = command](const Ref<NSObject>&) {
            if (textWidget()) (textWidget()->*perform)();
        });
    }
}

NSTextViewWidget::~NSTextViewWidget() = default;

Ref<NSTextViewWidget> NSTextViewWidget::initWithTextView(const Ref<NSTextView>& textView, QWidget* parent) {
    return Ref<NSTextViewWidget>(new NSTextViewWidget(textView, new TextWidget(textView, parent)));
}

TextWidget* NSTextViewWidget::textWidget() const {
    return static_cast<TextWidget*>(widget());
}

void NSTextViewWidget::setBackdrop(const Ref<NSBitmapImageRep>& picture) {
    if (textWidget()) textWidget()->setBackdrop(picture);
}

void NSTextViewWidget::setInsertionPointOfEmptyText(std::function<NSRect()> place) {
    if (textWidget()) textWidget()->setInsertionPointOfEmptyText(std::move(place));
}

void NSTextViewWidget::redisplay() {
    if (textWidget()) textWidget()->redisplay();
}

NSPoint NSTextViewWidget::pointInWidget(NSPoint containerPoint) const {
    if (!textWidget()) return {};
    const QPointF point = textWidget()->toWidget(containerPoint);
    return {static_cast<float>(point.x()), static_cast<float>(point.y())};
}

bool NSTextViewWidget::respondsTo(const std::string& action) const {
    return actionsOfTextViews().contains(action) || NSView::respondsTo(action);
}

bool NSTextViewWidget::tryToPerform(const std::string& action, const Ref<NSObject>& sender) {
    const auto found = actionsOfTextViews().find(action);
    if (found == actionsOfTextViews().end()) return NSView::tryToPerform(action, sender);
    found->second(*textView_, sender);
    return true;
}

}  // namespace qz
