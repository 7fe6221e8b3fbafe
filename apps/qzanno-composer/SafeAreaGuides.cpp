#include "apps/qzanno-composer/SafeAreaGuides.h"

#include <QEvent>
#include <QPainter>

namespace qz::composer {

SafeAreaGuides::SafeAreaGuides(const Ref<NSTextViewWidget>& over) : QWidget(over->widget()), over_(over) {
    setObjectName("safeAreas");
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    parentWidget()->installEventFilter(this);
    resize(parentWidget()->size());
    hide();
}

bool SafeAreaGuides::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) resize(parentWidget()->size());
    return QWidget::eventFilter(watched, event);
}

void SafeAreaGuides::paintEvent(QPaintEvent* /*event*/) {
    const Ref<NSTextViewWidget> text = over_.lock();
    if (!text) return;
    const NSSize screen = text->textView()->textContainer()->containerSize();
    const NSPoint origin = text->pointInWidget({0, 0});
    const NSPoint corner = text->pointInWidget({screen.width, screen.height});
    const QRectF area(QPointF(origin.x, origin.y), QPointF(corner.x, corner.y));
    QPainter painter(this);
    for (const double part : {kActionSafe, kTitleSafe}) {
        const QSizeF size = area.size() * part;
        const QRectF frame(area.center() - QPointF(size.width() / 2, size.height() / 2), size);
        // Light on dark, to show on any picture; the inner frame is dashed to distinguish it.
        painter.setPen(QPen(QColor(0, 0, 0, 150), 3));
        painter.drawRect(frame);
        painter.setPen(QPen(QColor(255, 255, 255, 230), 1, part == kTitleSafe ? Qt::DashLine : Qt::SolidLine));
        painter.drawRect(frame);
    }
}

}  // namespace qz::composer
