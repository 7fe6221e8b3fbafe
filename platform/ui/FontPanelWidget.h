#pragma once

#include <QWidget>

#include "QzAnno/platform/text/NSFont.h"

class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace qz {

class NSFontManager;

/// Lists of the families and of the faces of one, and optionally a size. Lists the fonts of the library that the font
/// shown last comes from, at first those of this machine.
class FontPanelWidget final : public QWidget {
public:
    explicit FontPanelWidget(NSFontManager& manager);

    void showFont(const Ref<NSFont>& font, bool isMultiple);
    void showControls(bool family, bool face, bool size);

private:
    void listFamilies(const QString& filter);
    void listFaces();
    void choose();

    NSFontManager& manager_;
    NSFont::Library fonts_;
    QLineEdit* search_;
    QListWidget* families_;
    QListWidget* faces_;
    QDoubleSpinBox* size_;
    QLabel* note_;
    // True while lists are being filled, which is not the user's choice.
    bool isFilling_ = false;
};

}  // namespace qz
