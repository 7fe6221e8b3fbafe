#include "apps/qzanno-composer/Screenshot.h"

#include <QApplication>
#include <QBuffer>
#include <QPainter>
#include <QPixmap>
#include <QWidget>
#include <algorithm>

#include "QzAnno/platform/foundation/Files.h"

namespace qz::composer {

bool writeScreenshot(const std::vector<QWidget*>& windows, const std::string& path, std::string& error) {
    constexpr int kGap = 16;
    // Layouts settle and focus arrives through the event loop.
    for (int i = 0; i < 5; ++i) QApplication::processEvents();
    std::vector<QPixmap> pictures;
    QSize size(kGap, 0);
    for (QWidget* window : windows) {
        pictures.push_back(window->grab());
        // Pixel for pixel, even on a high-density screen.
        pictures.back().setDevicePixelRatio(1);
        size = {size.width() + pictures.back().width() + kGap, std::max(size.height(), pictures.back().height())};
    }
    QImage whole(size.width(), size.height() + 2 * kGap, QImage::Format_RGB32);
    whole.fill(QColor(0x50, 0x58, 0x60));
    QPainter painter(&whole);
    int x = kGap;
    for (const QPixmap& picture : pictures) {
        painter.drawPixmap(x, kGap, picture);
        x += picture.width() + kGap;
    }
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!whole.save(&buffer, "PNG")) {
        error = "the picture cannot be made";
        return false;
    }
    return writeFileAtomically(
        path, {reinterpret_cast<const uint8_t*>(bytes.constData()), static_cast<size_t>(bytes.size())}, &error);
}

}  // namespace qz::composer
