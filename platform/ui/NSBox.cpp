#include "platform/ui/NSBox.h"

#include <QGroupBox>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "platform/ui/QtValues.h"

namespace qz {
namespace {

Ref<NSString> titleOf(const NSCell& cell) {
    const auto* button = dynamic_cast<const NSButtonCell*>(&cell);
    return button ? button->title() : cell.stringValue();
}

}  // namespace

NSBox::NSBox(QGroupBox* widget)
    : NSView(widget), titleCell_(NSTextFieldCell::initTextCell(widget ? fromQt(widget->title()) : NSString::string())) {
    if (!widget) return;
    QObject::connect(widget, &QGroupBox::toggled, widget,
                     [this](bool on) { titleCell_->setObjectValue(NSNumber::numberWithInt(on ? 1 : 0)); });
    // Only a click by the user sends the action, as with every button.
    QObject::connect(widget, &QGroupBox::clicked, widget, [this] {
        const auto cell = std::dynamic_pointer_cast<NSButtonCell>(titleCell_);
        if (cell && !cell->action().empty()) {
            NSApplication::sharedApplication().sendAction(cell->action(), cell->target(), refTo(*this));
        }
    });
}

NSBox::~NSBox() {
    // The widget reports clicks to the cell and may outlive the view.
    if (widget()) QObject::disconnect(widget(), nullptr, widget(), nullptr);
}

Ref<NSBox> NSBox::boxWithWidget(QGroupBox* widget) {
    return Ref<NSBox>(new NSBox(widget));
}

QGroupBox* NSBox::groupBox() const {
    return static_cast<QGroupBox*>(widget());
}

void NSBox::setTitleCell(const Ref<NSCell>& cell) {
    if (!cell) return;
    const Ref<NSString> title = titleOf(*titleCell_);
    const auto button = std::dynamic_pointer_cast<NSButtonCell>(cell);
    button ? button->setTitle(title) : cell->setStringValue(title);
    titleCell_ = cell;
    QGroupBox* box = groupBox();
    if (!box) return;
    box->setTitle(toQt(*title));
    const bool isCheckBox = button && button->buttonType() == NSButtonType::switchButton;
    box->setCheckable(isCheckBox);
    if (isCheckBox) box->setChecked(button->state() > 0);
}

void setCellBox(NSBox& box, const Ref<NSResponder>& target, const std::string& action) {
    const Ref<NSButtonCell> cell = NSButtonCell::init();
    cell->setEnabled(true);
    cell->setButtonType(NSButtonType::switchButton);
    cell->setTag(box.titleCell()->tag());
    cell->setTargetAndAction(target, action);
    box.setTitleCell(cell);
}

}  // namespace qz
