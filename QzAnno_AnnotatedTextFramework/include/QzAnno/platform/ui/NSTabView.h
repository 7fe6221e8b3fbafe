#pragma once

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/ui/NSView.h"

class QStackedWidget;

namespace qz {

/// Pages of which one shows. A page's label is the title of its widget.
class NSTabView final : public NSView {
public:
    /// The pages are those of the widget.
    static Ref<NSTabView> tabViewWithWidget(QStackedWidget* widget);

    /// 0 once the widget has gone.
    int32_t numberOfTabViewItems() const;
    /// None outside the pages.
    Ref<NSString> labelOfTabViewItemAtIndex(int32_t index) const;
    /// Does nothing outside the pages.
    void selectTabViewItemAtIndex(int32_t index);
    /// -1 when there are no pages.
    int32_t indexOfSelectedItem() const;

    std::string className() const override { return "NSTabView"; }

private:
    explicit NSTabView(QStackedWidget* widget);
    QStackedWidget* pages() const;
};

}  // namespace qz
