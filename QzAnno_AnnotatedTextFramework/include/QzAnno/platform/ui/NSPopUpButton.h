#pragma once

#include "QzAnno/platform/ui/NSMenu.h"
#include "QzAnno/platform/ui/NSView.h"

class QComboBox;

namespace qz {

/// A button that shows the chosen item of a menu.
class NSPopUpButton final : public NSView {
public:
    /// Has no menu; the widget keeps its choices.
    static Ref<NSPopUpButton> popUpButtonWithWidget(QComboBox* widget);

    /// Null until one is set.
    const Ref<NSMenu>& menu() const { return menu_; }
    /// Shows the current titles of the menu's items and chooses the first; the menu must not be null. Choosing an item
    /// sends no action: controls bind to its tag.
    void setMenu(const Ref<NSMenu>& menu);

    std::string className() const override { return "NSPopUpButton"; }

private:
    explicit NSPopUpButton(QComboBox* widget);
    QComboBox* comboBox() const;

    Ref<NSMenu> menu_;
};

}  // namespace qz
