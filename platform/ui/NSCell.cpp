#include "QzAnno/platform/ui/NSCell.h"

#include "QzAnno/platform/foundation/NSNumber.h"

namespace qz {

Ref<NSString> NSCell::stringValue() const {
    if (auto text = std::dynamic_pointer_cast<NSString>(objectValue_)) return text;
    return objectValue_ ? NSString::stringWithUTF8String(objectValue_->description()) : NSString::string();
}

Ref<NSTextFieldCell> NSTextFieldCell::initTextCell(const Ref<NSString>& text) {
    const auto cell = std::make_shared<NSTextFieldCell>();
    cell->setStringValue(text);
    return cell;
}

Ref<NSButtonCell> NSButtonCell::init() {
    return std::make_shared<NSButtonCell>();
}

int32_t NSButtonCell::state() const {
    const auto number = std::dynamic_pointer_cast<NSNumber>(objectValue());
    const int32_t value = number ? number->intValue() : 0;
    if (value < 0 && allowsMixedState_) return -1;
    return value != 0 ? 1 : 0;
}

void NSButtonCell::setTargetAndAction(const Ref<NSResponder>& target, const std::string& action) {
    target_ = target;
    action_ = action;
}

}  // namespace qz
