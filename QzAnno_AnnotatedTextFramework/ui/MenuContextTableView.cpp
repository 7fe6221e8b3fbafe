#include "QzAnno/ui/MenuContextTableView.h"

#include "QzAnno/platform/foundation/NSNumber.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

Ref<MenuContextTableView> MenuContextTableView::tableViewWithWidget(QTableView* widget) {
    return Ref<MenuContextTableView>(new MenuContextTableView(widget));
}

Ref<NSMenu> MenuContextTableView::menuForEvent(int x, int y) {
    column_ = columnAtPoint(x, y);
    row_ = rowAtPoint(x, y);
    auto* menus = dynamic_cast<MenuContextTableViewDelegate*>(delegate());
    const Ref<NSMenu> menu = menus ? menus->menuForRow(row_, column_) : nullptr;
    return menu ? menu : NSTableView::menuForEvent(x, y);
}

void MenuContextTableView::textDidEndEditing(const NSNotification& notification) {
    const auto movement =
        notification.userInfo ? notification.userInfo->objectForKey<NSNumber>(*NSTextMovementKey) : nullptr;
    if (!movement || movement->intValue() != NSReturnTextMovement) return NSTableView::textDidEndEditing(notification);
    ObjectMap info;
    info.set(NSTextMovementKey, NSNumber::numberWithInt(NSIllegalTextMovement));
    NSTableView::textDidEndEditing(
        {notification.name, notification.object, NSDictionary::dictionaryWithMap(std::move(info))});
}

}  // namespace qz
