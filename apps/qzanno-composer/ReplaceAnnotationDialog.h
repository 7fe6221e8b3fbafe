#pragma once

#include <QDialog>

#include "apps/qzanno-composer/TitleDocument.h"

class QComboBox;

namespace qz::composer {

/// Asks which annotation should replace which in all titles.
class ReplaceAnnotationDialog final : public QDialog {
public:
    ReplaceAnnotationDialog(const QzAnnoPalette& palette, QWidget* parent);

    Ref<QzAnnoKey> replacedKey() const;
    Ref<QzAnnoKey> replacementKey() const;

private:
    std::vector<Ref<QzAnnoKey>> keys_;
    QComboBox* const replaced_;
    QComboBox* const replacement_;
};

}  // namespace qz::composer
