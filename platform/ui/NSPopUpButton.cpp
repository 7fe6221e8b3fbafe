#include "QzAnno/platform/ui/NSPopUpButton.h"

#include <QComboBox>

#include "platform/ui/QtValues.h"

namespace qz {

NSPopUpButton::NSPopUpButton(QComboBox* widget) : NSView(widget) {}

Ref<NSPopUpButton> NSPopUpButton::popUpButtonWithWidget(QComboBox* widget) {
    return Ref<NSPopUpButton>(new NSPopUpButton(widget));
}

QComboBox* NSPopUpButton::comboBox() const {
    return static_cast<QComboBox*>(widget());
}

void NSPopUpButton::setMenu(const Ref<NSMenu>& menu) {
    menu_ = menu;
    if (!comboBox()) return;
    comboBox()->clear();
    for (const Ref<NSMenuItem>& item : menu->items()) comboBox()->addItem(toQt(*item->title()), item->tag());
}

}  // namespace qz
