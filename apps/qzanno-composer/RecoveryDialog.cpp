#include "apps/qzanno-composer/RecoveryDialog.h"

#include <QDateTime>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include "apps/qzanno-composer/Recovery.h"
#include "platform/ui/QtValues.h"

namespace qz::composer {
namespace {

constexpr int kPathRole = Qt::UserRole;
constexpr int kIsReadableRole = Qt::UserRole + 1;
constexpr qsizetype kExcerptMax = 60;

QString described(const Recovery::Contents& contents) {
    const size_t count = contents.file.titles.size();
    const size_t shown = std::min(contents.current, count - 1);
    QString text = toQt(*contents.file.titles[shown].text->string()).simplified();
    if (text.size() > kExcerptMax) text = text.left(kExcerptMax) + "…";
    const QString number = count == 1 ? QString("1 title") : QString("%1 titles").arg(count);
    return number + ": " + (text.isEmpty() ? QString("(empty)") : text);
}

}  // namespace

RecoveryDialog::RecoveryDialog(const QStringList& paths, QWidget* parent) : QDialog(parent), list_(new QListWidget) {
    setWindowTitle("Recover Unsaved Work");
    list_->setAccessibleName("Unsaved work");
    for (auto path = paths.crbegin(); path != paths.crend(); ++path) add(*path);
    auto* text =
        new QLabel("The composer ended before these changes were saved. What is not recovered now stays here.");
    text->setWordWrap(true);
    auto* buttons = new QDialogButtonBox;
    recover_ = buttons->addButton("Recover", QDialogButtonBox::AcceptRole);
    discard_ = buttons->addButton("Discard", QDialogButtonBox::DestructiveRole);
    buttons->addButton("Later", QDialogButtonBox::RejectRole);
    recover_->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(discard_, &QPushButton::clicked, this, &RecoveryDialog::discard);
    connect(list_, &QListWidget::currentRowChanged, this, &RecoveryDialog::follow);
    connect(list_, &QListWidget::itemActivated, recover_, &QPushButton::click);
    auto* column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addWidget(list_);
    column->addWidget(buttons);
    list_->setCurrentRow(0);
    follow();
    resize(560, 280);
}

void RecoveryDialog::add(const QString& path) {
    std::string error;
    const auto contents = Recovery::read(path, error);
    const QString time = QLocale().toString(QFileInfo(path).lastModified(), QLocale::ShortFormat);
    auto* item = new QListWidgetItem(time + "   " + (contents ? described(*contents) : QString::fromStdString(error)));
    item->setData(kPathRole, path);
    item->setData(kIsReadableRole, contents.has_value());
    item->setToolTip(item->text());
    list_->addItem(item);
}

void RecoveryDialog::discard() {
    QListWidgetItem* item = list_->currentItem();
    if (!item || !QFile::remove(item->data(kPathRole).toString())) return;
    delete item;
    if (list_->count() == 0) reject();
}

void RecoveryDialog::follow() {
    const QListWidgetItem* item = list_->currentItem();
    recover_->setEnabled(item && item->data(kIsReadableRole).toBool());
    discard_->setEnabled(item != nullptr);
}

QString RecoveryDialog::chosen() const {
    const QListWidgetItem* item = list_->currentItem();
    return item ? item->data(kPathRole).toString() : QString();
}

}  // namespace qz::composer
