#include "platform/foundation/NSURL.h"

namespace qz {

Ref<NSURL> NSURL::URLWithString(Ref<NSString> string, Ref<NSURL> relativeToURL) {
    return Ref<NSURL>(new NSURL(string ? std::move(string) : NSString::string(), std::move(relativeToURL)));
}

bool NSURL::isEqual(const NSObject& other) const {
    const auto* const url = dynamic_cast<const NSURL*>(&other);
    return url && string_->isEqualToString(*url->string_) && areEqual(base_, url->base_);
}

std::string NSURL::description() const {
    return base_ ? string_->utf8() + " -- " + base_->description() : string_->utf8();
}

}  // namespace qz
