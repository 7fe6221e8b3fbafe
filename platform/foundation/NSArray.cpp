#include "QzAnno/platform/foundation/NSArray.h"

#include <algorithm>

#include "platform/foundation/Descent.h"

namespace qz {

Ref<NSArray> NSArray::array() {
    return arrayWithObjects({});
}

Ref<NSArray> NSArray::arrayWithObjects(std::vector<Ref<NSObject>> elements) {
    return owned(new NSArray(std::move(elements)));
}

bool NSArray::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* array = dynamic_cast<const NSArray*>(&other);
    const Descent descent;
    return array && descent.mayGoOn() && std::ranges::equal(elements_, array->elements_, areEqual);
}

std::string NSArray::description() const {
    std::string text = "(";
    for (const Ref<NSObject>& element : elements_) {
        text += (text.size() > 1 ? ", " : "") + heldDescription(element.get());
    }
    return text + ")";
}

}  // namespace qz
