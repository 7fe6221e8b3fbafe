#include <QAccessible>
#include <QAccessibleWidget>

#include "platform/ui/QtValues.h"
#include "platform/ui/TextWidget.h"

namespace qz {
namespace {

/// A text widget as screen readers see it. Positions are UTF-16 units, as in the toolkit.
class AccessibleText final : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit AccessibleText(TextWidget* widget) : QAccessibleWidget(widget, QAccessible::EditableText) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? whole() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = view().isEditable();
        state.multiLine = true;
        state.selectableText = true;
        return state;
    }

    void selection(int index, int* start, int* end) const override {
        const Range selected = view().selectedRange();
        const bool isThere = index == 0 && selected.length > 0;
        *start = isThere ? static_cast<int>(selected.location) : 0;
        *end = isThere ? static_cast<int>(selected.end()) : 0;
    }
    int selectionCount() const override { return view().selectedRange().length > 0 ? 1 : 0; }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int) override { setCursorPosition(cursorPosition()); }
    void setSelection(int, int start, int end) override {
        const int first = std::max(0, std::min(start, end));
        view().setSelectedRange({static_cast<uint32_t>(first), static_cast<uint32_t>(std::max(start, end) - first)});
    }
    int cursorPosition() const override { return static_cast<int>(textWidget().caret().position()); }
    void setCursorPosition(int position) override { setSelection(0, position, position); }
    QString text(int start, int end) const override { return whole().mid(start, end - start); }
    int characterCount() const override { return static_cast<int>(view().string()->length()); }
    QRect characterRect(int offset) const override {
        const Ref<NSTextContainer> container = view().textContainer();
        const auto rects = selectionRects(caretLines(*container->layoutManager(), *container),
                                          {static_cast<uint32_t>(std::max(0, offset)), 1});
        if (rects.empty()) return {};
        const QRect inWidget = textWidget().toWidget(rects.front()).toAlignedRect();
        return {widget()->mapToGlobal(inWidget.topLeft()), inWidget.size()};
    }
    int offsetAtPoint(const QPoint& point) const override {
        return static_cast<int>(
            textWidget().caret().indexAtPoint(textWidget().toContainer(QPointF(widget()->mapFromGlobal(point)))));
    }
    void scrollToSubstring(int, int) override {}
    QString attributes(int offset, int* start, int* end) const override {
        *start = offset;
        *end = characterCount();
        return {};
    }

private:
    TextWidget& textWidget() const { return *static_cast<TextWidget*>(widget()); }
    NSTextView& view() const { return textWidget().view(); }
    QString whole() const { return toQt(*view().string()); }
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* widget = dynamic_cast<TextWidget*>(object);
    return widget ? new AccessibleText(widget) : nullptr;
}

}  // namespace

void installTextAccessibility() {
    static const bool isInstalled = (QAccessible::installFactory(makeAccessible), true);
    (void)isInstalled;
}

}  // namespace qz
