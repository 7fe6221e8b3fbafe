#include "QzAnno/platform/ui/NSMenu.h"

#include <QMenu>

#include "QzAnno/platform/ui/NSApplication.h"
#include "platform/ui/QtValues.h"

namespace qz {

Ref<NSMenuItem> NSMenuItem::initWithTitle(const Ref<NSString>& title, const std::string& action, int32_t tag) {
    const auto item = std::make_shared<NSMenuItem>();
    item->title_ = title;
    item->action_ = action;
    item->tag_ = tag;
    return item;
}

Ref<NSMenu> NSMenu::initWithTitle(const Ref<NSString>& title) {
    const auto menu = std::make_shared<NSMenu>();
    menu->title_ = title;
    return menu;
}

bool NSMenu::isEnabled(const NSMenuItem& item) {
    const Ref<NSResponder> target = item.target();
    if (auto* validation = dynamic_cast<NSMenuValidation*>(target.get())) return validation->validateMenuItem(item);
    return !item.action().empty();
}

void NSMenu::popUp(QWidget* forWidget, int x, int y) {
    auto* menu = new QMenu(toQt(*title_), forWidget);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(toQt(*title_));
    for (const Ref<NSMenuItem>& item : items_) {
        QAction* action = menu->addAction(toQt(*item->title()));
        action->setObjectName(toQt(item->action()));
        action->setEnabled(isEnabled(*item));
        QObject::connect(action, &QAction::triggered, menu, [item] {
            if (!item->action().empty()) {
                NSApplication::sharedApplication().sendAction(item->action(), item->target(), item);
            }
        });
    }
    menu->popup(forWidget->mapToGlobal(QPoint(x, y)));
}

}  // namespace qz
