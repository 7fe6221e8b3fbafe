#include "platform/ui/FontPanelWidget.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <map>
#include <set>

#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/platform/ui/NSFontManager.h"
#include "platform/ui/QtValues.h"

namespace qz {

FontPanelWidget::FontPanelWidget(NSFontManager& manager)
    : manager_(manager),
      fonts_(FontLibrary::shared()),
      search_(new QLineEdit),
      families_(new QListWidget),
      faces_(new QListWidget),
      size_(new QDoubleSpinBox),
      note_(new QLabel) {
    setWindowTitle("Fonts");
    search_->setPlaceholderText("Search families");
    search_->setAccessibleName("Search families");
    search_->setClearButtonEnabled(true);
    families_->setAccessibleName("Families");
    faces_->setAccessibleName("Faces");
    size_->setAccessibleName("Size");
    size_->setRange(1, NSFont::kPointSizeMax);
    size_->setSuffix(" pt");
    auto* lists = new QHBoxLayout;
    lists->addWidget(families_, 3);
    lists->addWidget(faces_, 2);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search_);
    layout->addLayout(lists);
    layout->addWidget(size_);
    layout->addWidget(note_);
    resize(440, 360);
    connect(search_, &QLineEdit::textChanged, this, &FontPanelWidget::listFamilies);
    connect(families_, &QListWidget::currentRowChanged, this, [this] {
        listFaces();
        choose();
    });
    connect(faces_, &QListWidget::currentRowChanged, this, [this] { choose(); });
    connect(size_, &QDoubleSpinBox::valueChanged, this, [this] { choose(); });
    listFamilies({});
}

void FontPanelWidget::listFamilies(const QString& filter) {
    isFilling_ = true;
    const QString current = families_->currentItem() ? families_->currentItem()->text() : QString();
    std::set<std::string> names;
    for (const InstalledFont& font : fonts_->fonts()) names.insert(font.familyName);
    families_->clear();
    for (const std::string& name : names) {
        const QString family = toQt(name);
        if (!filter.isEmpty() && !family.contains(filter, Qt::CaseInsensitive)) continue;
        families_->addItem(family);
        if (family == current) families_->setCurrentRow(families_->count() - 1);
    }
    isFilling_ = false;
}

void FontPanelWidget::listFaces() {
    const bool wasFilling = std::exchange(isFilling_, true);
    faces_->clear();
    const std::string family =
        families_->currentItem() ? families_->currentItem()->text().toStdString() : std::string();
    // From light to bold, upright before slanted.
    std::multimap<std::pair<double, int>, const InstalledFont*> faces;
    for (const InstalledFont& font : fonts_->fonts()) {
        if (font.familyName == family) faces.emplace(std::pair(font.weight, font.slant), &font);
    }
    int regular = 0;
    for (const auto& [key, font] : faces) {
        auto* item = new QListWidgetItem(toQt(font->styleName), faces_);
        item->setData(Qt::UserRole, toQt(font->fontName));
        if (key == std::pair(80.0, 0)) regular = faces_->count() - 1;
    }
    faces_->setCurrentRow(faces_->count() > 0 ? regular : -1);
    isFilling_ = wasFilling;
}

void FontPanelWidget::choose() {
    const QListWidgetItem* face = faces_->currentItem();
    if (isFilling_ || !face) return;
    note_->clear();
    manager_.chooseFont(face->data(Qt::UserRole).toString().toStdString(), static_cast<float>(size_->value()));
}

void FontPanelWidget::showFont(const Ref<NSFont>& font, bool isMultiple) {
    isFilling_ = true;
    note_->setText(isMultiple ? "Several fonts" : QString());
    if (font && font->fontLibrary() != fonts_) {
        fonts_ = font->fontLibrary();
        listFamilies(search_->text());
    }
    const InstalledFont* installed = font ? fonts_->fontWithName(font->fontName()->utf8()) : nullptr;
    if (installed) {
        search_->clear();
        const auto families = families_->findItems(toQt(installed->familyName), Qt::MatchExactly);
        if (!families.isEmpty()) families_->setCurrentItem(families.front());
        listFaces();
        for (int i = 0; i < faces_->count(); ++i) {
            if (faces_->item(i)->data(Qt::UserRole).toString() == toQt(installed->fontName)) faces_->setCurrentRow(i);
        }
        size_->setValue(font->pointSize());
    }
    isFilling_ = false;
}

void FontPanelWidget::showControls(bool family, bool face, bool size) {
    search_->setVisible(family);
    families_->setVisible(family);
    faces_->setVisible(face);
    size_->setVisible(size);
}

}  // namespace qz
