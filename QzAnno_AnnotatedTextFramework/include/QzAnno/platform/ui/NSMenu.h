#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/ui/NSResponder.h"

class QAction;
class QWidget;

namespace qz {

/// A menu item: a title, a tag, and the action sent when the user chooses it.
class NSMenuItem final : public NSObject {
public:
    /// Has no target. The title must not be null.
    static Ref<NSMenuItem> initWithTitle(const Ref<NSString>& title, const std::string& action = {}, int32_t tag = 0);

    /// Never null.
    const Ref<NSString>& title() const { return title_; }
    /// A number that identifies the item to its owner and to a pop-up button.
    int32_t tag() const { return tag_; }
    /// If empty, choosing the item sends nothing.
    const std::string& action() const { return action_; }
    /// Not owned; null means the responder chain.
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

/// A target that decides whether its menu items are enabled.
class NSMenuValidation {
public:
    virtual ~NSMenuValidation() = default;
    /// Called for each item with this target when its menu opens.
    virtual bool validateMenuItem(const NSMenuItem& item) = 0;
};

/// Items to choose from: a context menu, or the choices of a pop-up button.
class NSMenu final : public NSObject {
public:
    /// An empty menu. The title must not be null.
    static Ref<NSMenu> initWithTitle(const Ref<NSString>& title);

    /// What screen readers say; never null.
    const Ref<NSString>& title() const { return title_; }
    /// Appends an item, which must not be null. An open menu, or a pop-up button that shows the menu, does not change.
    void addItem(const Ref<NSMenuItem>& item) { items_.push_back(item); }
    /// From top to bottom.
    const std::vector<Ref<NSMenuItem>>& items() const { return items_; }
    /// The item's target decides if it is a `NSMenuValidation`; otherwise the item is enabled if it has an action.
    static bool isEnabled(const NSMenuItem& item);

    /// Opens the menu at a position in the widget, in its points, and returns without waiting for a choice.
    void popUp(QWidget* forWidget, int x, int y);

    std::string className() const override { return "NSMenu"; }

private:
    Ref<NSString> title_;
    std::vector<Ref<NSMenuItem>> items_;
};

}  // namespace qz
