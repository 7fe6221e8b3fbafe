#include "QzAnno/platform/ui/NSTabView.h"

#include <QStackedWidget>

#include "platform/ui/QtValues.h"

namespace qz {

NSTabView::NSTabView(QStackedWidget* widget) : NSView(widget) {}

Ref<NSTabView> NSTabView::tabViewWithWidget(QStackedWidget* widget) {
    return Ref<NSTabView>(new NSTabView(widget));
}

QStackedWidget* NSTabView::pages() const {
    return static_cast<QStackedWidget*>(widget());
}

int32_t NSTabView::numberOfTabViewItems() const {
    return pages() ? pages()->count() : 0;
}

Ref<NSString> NSTabView::labelOfTabViewItemAtIndex(int32_t index) const {
    const QWidget* page = pages() ? pages()->widget(index) : nullptr;
    return page ? fromQt(page->windowTitle()) : nullptr;
}

void NSTabView::selectTabViewItemAtIndex(int32_t index) {
    if (index >= 0 && index < numberOfTabViewItems()) pages()->setCurrentIndex(index);
}

}  // namespace qz
