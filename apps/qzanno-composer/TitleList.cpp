#include "apps/qzanno-composer/TitleList.h"

#include <QAccessible>
#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <algorithm>

#include "captions/ClockTime.h"
#include "platform/ui/QtValues.h"

namespace qz::composer {
namespace {

// Room for the marks above and below letters of any script.
constexpr int kRowPadding = 8;

enum Column { numberColumn, startColumn, endColumn, textColumn };

QString timeOf(const std::optional<double>& time) {
    // Shows hours only if there are any, since the line is short.
    return time ? QString::fromStdString(clockOf(*time)).mid(*time < 3600 ? 3 : 0) : QString();
}

void fill(QTreeWidgetItem& item, const Title& title, size_t number) {
    const QString text = toQt(*title.text->string()).simplified();
    item.setSizeHint(numberColumn, {0, QFontMetrics(item.treeWidget()->font()).height() + kRowPadding});
    item.setText(numberColumn, QString::number(number));
    item.setText(startColumn, timeOf(title.start));
    item.setText(endColumn, timeOf(title.end));
    item.setText(textColumn, text.isEmpty() ? QString("(empty)") : text);
    item.setToolTip(textColumn, text);
}

}  // namespace

TitleList::TitleList(QWidget* parent)
    : QDockWidget("Titles", parent), list_(new QTreeWidget), refusal_(new QLabel(list_)) {
    setObjectName("titleList");
    list_->setAccessibleName("Titles");
    list_->setHeaderLabels({"No.", "Start", "End", "Title"});
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAllColumnsShowFocus(true);
    list_->setTextElideMode(Qt::ElideRight);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->header()->setSectionsMovable(false);
    list_->header()->setMinimumSectionSize(20);
    const QFontMetrics metrics = list_->fontMetrics();
    list_->setColumnWidth(numberColumn, metrics.horizontalAdvance("0000") + 12);
    for (const int column : {startColumn, endColumn}) {
        list_->setColumnWidth(column, metrics.horizontalAdvance("00:00.000") + 14);
    }
    setWidget(list_);
    refusal_->setWordWrap(true);
    refusal_->setAutoFillBackground(true);
    refusal_->setBackgroundRole(QPalette::ToolTipBase);
    refusal_->setForegroundRole(QPalette::ToolTipText);
    refusal_->setFrameShape(QFrame::Box);
    refusal_->setMargin(4);
    refusal_->setAttribute(Qt::WA_TransparentForMouseEvents);
    refusal_->hide();
    connect(list_->verticalScrollBar(), &QScrollBar::valueChanged, refusal_, &QWidget::hide);
    // The list's header says what it is; a menu item and its shortcut show and hide it.
    setTitleBarWidget(new QWidget(this));
    setFeatures(DockWidgetClosable);
    connect(list_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (item && chosen_) chosen_(static_cast<size_t>(list_->indexOfTopLevelItem(item)));
    });
    connect(list_, &QTreeWidget::itemDoubleClicked, this, &TitleList::edit);
    for (const auto& [column, key] :
         {std::pair(startColumn, Qt::NoModifier), std::pair(endColumn, Qt::ShiftModifier)}) {
        auto* editByKey = new QAction(list_);
        editByKey->setShortcut(key | Qt::Key_F2);
        editByKey->setShortcutContext(Qt::WidgetShortcut);
        connect(editByKey, &QAction::triggered, this, [this, column = column] { edit(list_->currentItem(), column); });
        list_->addAction(editByKey);
    }
    connect(list_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        const auto title = static_cast<size_t>(list_->indexOfTopLevelItem(item));
        const QString entered = item->text(column);
        // Until the entry is known to be a time, the row shows the former one.
        const QSignalBlocker quiet(list_);
        fill(*item, shown_[title], title + 1);
        refusal_->hide();
        if (timeEntered_) timeEntered_(title, column == endColumn, entered);
    });
}

void TitleList::edit(QTreeWidgetItem* item, int column) {
    if (!item || (column != startColumn && column != endColumn) || list_->isColumnHidden(column)) return;
    const QSignalBlocker quiet(list_);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    list_->editItem(item, column);
}

void TitleList::refuse(size_t title, const QString& reason) {
    const QRect row = list_->visualItemRect(list_->topLevelItem(static_cast<int>(title)));
    const QRect rows = list_->viewport()->geometry();
    refusal_->setText(reason);
    refusal_->resize(rows.width(), refusal_->heightForWidth(rows.width()));
    const bool fitsBelow = row.bottom() + refusal_->height() < rows.height();
    refusal_->move(rows.topLeft() + QPoint(0, fitsBelow ? row.bottom() + 1 : row.top() - refusal_->height()));
    refusal_->show();
    QAccessibleEvent alert(refusal_, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void TitleList::list(const std::vector<Title>& titles, size_t current) {
    const QSignalBlocker quiet(list_);
    refusal_->hide();
    const int count = static_cast<int>(titles.size());
    while (list_->topLevelItemCount() > count) delete list_->takeTopLevelItem(list_->topLevelItemCount() - 1);
    while (list_->topLevelItemCount() < count) list_->addTopLevelItem(new QTreeWidgetItem);
    shown_.resize(titles.size());
    for (size_t i = 0; i < titles.size(); ++i) {
        const Title& shown = shown_[i];
        if (shown.text == titles[i].text && shown.start == titles[i].start && shown.end == titles[i].end) continue;
        shown_[i] = titles[i];
        fill(*list_->topLevelItem(static_cast<int>(i)), titles[i], i + 1);
    }
    const bool hasTimes = std::ranges::any_of(titles, [](const Title& title) { return title.start.has_value(); });
    for (const int column : {startColumn, endColumn}) list_->setColumnHidden(column, !hasTimes);
    list_->setCurrentItem(list_->topLevelItem(static_cast<int>(current)));
}

}  // namespace qz::composer
