#include "platform/ui/ColorWell.h"

#include <QPainter>
#include <QPointer>

#include "platform/ui/NSColorPanel.h"
#include "platform/ui/QtValues.h"

namespace qz {

ColorWell::ColorWell(QWidget* parent) : QPushButton(parent) {
    QObject::connect(this, &QPushButton::clicked, this, [this] {
        NSColorPanel::sharedColorPanel().openForColor(color_,
                                                      [well = QPointer<ColorWell>(this)](const Ref<NSColor>& color) {
                                                          if (!well) return;
                                                          well->setColor(color);
                                                          if (well->chosen_) well->chosen_(color);
                                                      });
    });
}

void ColorWell::setColor(const Ref<NSColor>& color) {
    color_ = color ? color : NSColor::blackColor();
    const QColor shown = toQt(*color_);
    setToolTip(shown.name(QColor::HexArgb));
    setAccessibleDescription(shown.name(QColor::HexArgb));
    update();
}

void ColorWell::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    QPainter painter(this);
    const QRect swatch = rect().adjusted(6, 6, -6, -6);
    drawCheckerboard(painter, swatch, 5);
    painter.fillRect(swatch, toQt(*color_));
    if (!isEnabled()) {
        QColor veil = palette().color(QPalette::Window);
        veil.setAlpha(160);
        painter.fillRect(swatch, veil);
    }
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
}

void drawCheckerboard(QPainter& painter, const QRect& rect, int squareSize) {
    painter.fillRect(rect, QColor(0x66, 0x66, 0x66));
    for (int y = 0; y < rect.height(); y += squareSize) {
        for (int x = (y / squareSize) % 2 == 0 ? 0 : squareSize; x < rect.width(); x += 2 * squareSize) {
            painter.fillRect(QRect(rect.left() + x, rect.top() + y, squareSize, squareSize) & rect,
                             QColor(0x99, 0x99, 0x99));
        }
    }
}

}  // namespace qz
