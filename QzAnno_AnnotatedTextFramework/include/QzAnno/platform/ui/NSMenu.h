#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/ui/NSResponder.h"

class QAction;
class QWidget;

namespace qz {

/// An entry of a menu: a title and a tag, and the action that choosing it sends.
class NSMenuItem final : public NSObject {
public:
    /// The title must not be none. Without a target.
    static Ref<NSMenuItem> initWithTitle(const Ref<NSString>& title, const std::string& action = {}, int32_t tag = 0);

    /// Never none.
    const Ref<NSString>& title() const { return title_; }
    /// A number by which its owner knows the item; a pop-up button chooses by it.
    int32_t tag() const { return tag_; }
    /// Empty: choosing the item sends nothing.
    const std::string& action() const { return action_; }
    /// Not owned; none means up the responder chain.
    ///@{
    Ref<NSResponder> target() const { return target_.lock(); }
    void setTarget(const Ref<NSResponder>& target) { target_ = target; }
    ///@}

    std::string className() const override { return "NSMenuItem"; }

private:
    Ref<NSString> title_;
    std::string action_;
    int32_t tag_ = 0;
    WeakRef<NSResponder> target_;
};

/// Whether an item of a menu may be chosen now, as its target says.
class NSMenuValidation {
public:
    virtual ~NSMenuValidation() = default;
    /// Asked for each item that has this target when its menu opens.
    virtual bool validateMenuItem(const NSMenuItem& item) = 0;
};

/// Items to choose from: a context menu, or the choices of a pop-up button.
class NSMenu final : public NSObject {
public:
    /// Without items. The title must not be none.
    static Ref<NSMenu> initWithTitle(const Ref<NSString>& title);

    /// What reading programs say; never none.
    const Ref<NSString>& title() const { return title_; }
    /// Below those that it has; must not be none. A menu that is open, and a pop-up button that has the menu, stay as
    /// they are.
    void addItem(const Ref<NSMenuItem>& item) { items_.push_back(item); }
    /// From top to bottom.
    const std::vector<Ref<NSMenuItem>>& items() const { return items_; }
    /// An item's target decides when it validates menu items; else the item is enabled when it has an action.
    static bool isEnabled(const NSMenuItem& item);

    /// Opens the menu at a place of the widget, in its own points, without waiting for the choice.
    void popUp(QWidget* forWidget, int x, int y);

    std::string className() const override { return "NSMenu"; }

private:
    Ref<NSString> title_;
    std::vector<Ref<NSMenuItem>> items_;
};

}  // namespace qz
