#include "apps/qzanno-composer/TitleList.h"

#include <QListWidget>
#include <QSignalBlocker>

#include "platform/ui/QtValues.h"

namespace qz::composer {

QString clock(double seconds) {
    const auto total = static_cast<qint64>(seconds * 1000 + 0.5);
    return QString("%1:%2:%3.%4")
        .arg(total / 3600000, 2, 10, QChar('0'))
        .arg(total / 60000 % 60, 2, 10, QChar('0'))
        .arg(total / 1000 % 60, 2, 10, QChar('0'))
        .arg(total % 1000, 3, 10, QChar('0'));
}

namespace {

QString lineOf(const Title& title, size_t number) {
    QString line = QString::number(number);
    // Hours only where there are any: the line is short.
    if (title.start) line += "  " + clock(*title.start).mid(*title.start < 3600 ? 3 : 0);
    const QString text = toQt(*title.text->string()).simplified();
    return line + "  " + (text.isEmpty() ? QString("(empty)") : text);
}

}  // namespace

TitleList::TitleList(QWidget* parent) : QDockWidget("Titles", parent), list_(new QListWidget(this)) {
    setObjectName("titleList");
    list_->setAccessibleName("Titles");
    list_->setTextElideMode(Qt::ElideRight);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setUniformItemSizes(true);
    setWidget(list_);
    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0 && chosen_) chosen_(static_cast<size_t>(row));
    });
}

void TitleList::list(const std::vector<Title>& titles, size_t current) {
    const QSignalBlocker quiet(list_);
    const int count = static_cast<int>(titles.size());
    while (list_->count() > count) delete list_->takeItem(list_->count() - 1);
    while (list_->count() < count) list_->addItem(QString());
    shown_.resize(titles.size());
    for (size_t i = 0; i < titles.size(); ++i) {
        if (shown_[i].text == titles[i].text && shown_[i].start == titles[i].start) continue;
        shown_[i] = titles[i];
        const QString line = lineOf(titles[i], i + 1);
        QListWidgetItem* item = list_->item(static_cast<int>(i));
        item->setText(line);
        item->setToolTip(line);
    }
    list_->setCurrentRow(static_cast<int>(current));
}

}  // namespace qz::composer
