#include "platform/ui/NSColorPanel.h"

#include <QColorDialog>
#include <QPointer>

#include "platform/ui/QtValues.h"
#include "platform/ui/WindowFrames.h"

namespace qz {

struct NSColorPanel::State {
    QPointer<QColorDialog> dialog;
    std::function<void(const Ref<NSColor>&)> choose;
    bool showsAlpha = false;

    QColorDialog& made() {
        if (dialog) return *dialog;
        dialog = new QColorDialog;
        // The desktop's own dialog has buttons and waits for them.
        dialog->setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog);
        dialog->setOption(QColorDialog::ShowAlphaChannel, showsAlpha);
        dialog->setWindowTitle("Colours");
        dialog->setWindowFlag(Qt::Tool);
        keepFrame(*dialog, "Colors");
        QObject::connect(dialog, &QColorDialog::currentColorChanged, dialog, [this](const QColor& color) {
            if (choose) choose(fromQt(color));
        });
        QObject::connect(dialog, &QDialog::finished, dialog, [panel = dialog.data()] { passKeysOn(*panel); });
        return *dialog;
    }
};

NSColorPanel::NSColorPanel() : state_(std::make_unique<State>()) {}
NSColorPanel::~NSColorPanel() = default;

NSColorPanel& NSColorPanel::sharedColorPanel() {
    // Never destroyed: its dialog must not outlive the toolkit.
    static auto* panel = new NSColorPanel;
    return *panel;
}

bool NSColorPanel::showsAlpha() const {
    return state_->showsAlpha;
}

void NSColorPanel::setShowsAlpha(bool shows) {
    state_->showsAlpha = shows;
    if (state_->dialog) state_->dialog->setOption(QColorDialog::ShowAlphaChannel, shows);
}

Ref<NSColor> NSColorPanel::color() const {
    return state_->dialog ? fromQt(state_->dialog->currentColor()) : NSColor::blackColor();
}

void NSColorPanel::openForColor(const Ref<NSColor>& color, std::function<void(const Ref<NSColor>&)> choose) {
    // Showing a colour must not count as choosing it.
    state_->choose = nullptr;
    QColorDialog& dialog = state_->made();
    if (color) dialog.setCurrentColor(toQt(*color));
    state_->choose = std::move(choose);
    prepareToShow(dialog, true);
    dialog.show();
    dialog.raise();
}

void NSColorPanel::orderOut() {
    state_->choose = nullptr;
    if (state_->dialog) state_->dialog->hide();
}

QWidget* NSColorPanel::widget() const {
    return state_->dialog;
}

}  // namespace qz
