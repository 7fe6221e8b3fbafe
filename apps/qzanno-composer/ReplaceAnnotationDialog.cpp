#include "apps/qzanno-composer/ReplaceAnnotationDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>

#include "platform/ui/QtValues.h"

namespace qz::composer {

ReplaceAnnotationDialog::ReplaceAnnotationDialog(const QzAnnoPalette& palette, QWidget* parent)
    : QDialog(parent), replaced_(new QComboBox(this)), replacement_(new QComboBox(this)) {
    setWindowTitle("Replace Annotation");
    for (int32_t priority = palette.maxPriority(); priority > 0; --priority) {
        keys_.push_back(palette.annoKeyAtPriority(priority));
        for (QComboBox* choice : {replaced_, replacement_}) choice->addItem(toQt(*keys_.back()->name()));
    }
    replaced_->setObjectName("replaced");
    replacement_->setObjectName("replacement");
    replacement_->setCurrentIndex(keys_.size() > 1 ? 1 : 0);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton* replace = buttons->addButton("Replace in All Titles", QDialogButtonBox::AcceptRole);
    replace->setDefault(true);
    const auto validate = [this, replace] { replace->setEnabled(replacedKey() != replacementKey()); };
    for (QComboBox* choice : {replaced_, replacement_})
        connect(choice, &QComboBox::currentIndexChanged, this, validate);
    validate();
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* form = new QFormLayout(this);
    form->addRow("&Replace", replaced_);
    form->addRow("&by", replacement_);
    form->addRow(buttons);
}

Ref<QzAnnoKey> ReplaceAnnotationDialog::replacedKey() const {
    const int index = replaced_->currentIndex();
    return index < 0 ? nullptr : keys_[static_cast<size_t>(index)];
}

Ref<QzAnnoKey> ReplaceAnnotationDialog::replacementKey() const {
    const int index = replacement_->currentIndex();
    return index < 0 ? nullptr : keys_[static_cast<size_t>(index)];
}

}  // namespace qz::composer
