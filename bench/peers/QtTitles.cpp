#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include "bench/peers/Titles.h"

namespace qz::peers {
namespace {

class QtTitles final : public TitlePeer {
public:
    void draw(const Title& title, Frame& frame) override {
        QImage image(frame.bytes.data(), frame.width, frame.height, QImage::Format_RGBA8888_Premultiplied);
        image.fill(0);
        const QPainterPath path = pathOf(title, frame);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor colors[] = {QColor(0, 0, 0, 128), Qt::black};
        painter.translate(title.offset, title.offset);
        for (const QColor& color : colors) {
            QPen pen(color, title.outline);
            pen.setJoinStyle(Qt::RoundJoin);
            painter.setPen(pen);
            painter.setBrush(color);
            painter.drawPath(path);
            painter.resetTransform();
        }
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::white);
        painter.drawPath(path);
    }

private:
    static QPainterPath pathOf(const Title& title, const Frame& frame) {
        QFont font("DejaVu Sans");
        font.setBold(true);
        font.setPixelSize(int(title.size));
        const QFontMetricsF metrics(font);
        QPainterPath path;
        double y = frame.height - 40 - metrics.height() * double(title.lines.size()) + metrics.ascent();
        for (const std::string& line : title.lines) {
            const QString text = QString::fromStdString(line);
            path.addText((frame.width - metrics.horizontalAdvance(text)) / 2, y, font, text);
            y += metrics.height();
        }
        path.setFillRule(Qt::WindingFill);
        return path;
    }
};

}  // namespace

std::unique_ptr<TitlePeer> qtTitles(int, int) {
    return std::make_unique<QtTitles>();
}

}  // namespace qz::peers
