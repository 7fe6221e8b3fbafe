#pragma once

#include "QzAnno/platform/ui/NSMenu.h"
#include "QzAnno/platform/ui/NSView.h"

class QComboBox;

namespace qz {

/// A button that shows the item chosen last from a menu.
class NSPopUpButton final : public NSView {
public:
    /// Without a menu; the widget keeps the choices that it has.
    static Ref<NSPopUpButton> popUpButtonWithWidget(QComboBox* widget);

    /// None before one is set.
    const Ref<NSMenu>& menu() const { return menu_; }
    /// Offers the titles of its items as they are now, the first one chosen; must not be none. Choosing an item sends
    /// no action: controls are bound to its tag.
    void setMenu(const Ref<NSMenu>& menu);
    /// False when the menu has no item of that tag; the choice then stays.
    bool selectItemWithTag(int32_t tag);
    /// -1 when nothing is chosen.
    int32_t selectedTag() const;

    std::string className() const override { return "NSPopUpButton"; }

private:
    explicit NSPopUpButton(QComboBox* widget);
    QComboBox* comboBox() const;

    Ref<NSMenu> menu_;
};

}  // namespace qz
