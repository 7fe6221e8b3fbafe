#pragma once

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/ui/NSView.h"

class QStackedWidget;

namespace qz {

/// Shows one of several pages. A page's label is the title of its widget.
class NSTabView final : public NSView {
public:
    /// Uses the widget's pages.
    static Ref<NSTabView> tabViewWithWidget(QStackedWidget* widget);

    /// 0 once the widget has been destroyed.
    int32_t numberOfTabViewItems() const;
    /// Null if there is no such page.
    Ref<NSString> labelOfTabViewItemAtIndex(int32_t index) const;
    /// Does nothing if there is no such page.
    void selectTabViewItemAtIndex(int32_t index);

    std::string className() const override { return "NSTabView"; }

private:
    explicit NSTabView(QStackedWidget* widget);
    QStackedWidget* pages() const;
};

}  // namespace qz
