#include "QzAnno/platform/foundation/NSObject.h"

#include <functional>

namespace qz {

NSObject::~NSObject() = default;

bool NSObject::isEqual(const NSObject& other) const {
    return this == &other;
}

size_t NSObject::hash() const {
    return std::hash<const void*>()(this);
}

std::string NSObject::description() const {
    return "<" + className() + ">";
}

bool areEqual(const Ref<NSObject>& a, const Ref<NSObject>& b) {
    return a == b || (a && b && a->isEqual(*b));
}

}  // namespace qz
