#include "platform/foundation/NSURL.h"

namespace qz {

Ref<NSURL> NSURL::URLWithString(Ref<NSString> string, Ref<NSURL> relativeToURL) {
    return owned(new NSURL(string ? std::move(string) : NSString::string(), std::move(relativeToURL)));
}

bool NSURL::isEqual(const NSObject& other) const {
    const NSURL* mine = this;
    const auto* theirs = dynamic_cast<const NSURL*>(&other);
    while (mine && theirs && mine != theirs && mine->string_->isEqualToString(*theirs->string_)) {
        mine = mine->base_.get();
        theirs = theirs->base_.get();
    }
    return mine == theirs;
}

std::string NSURL::description() const {
    std::string text = string_->utf8();
    for (const NSURL* base = base_.get(); base; base = base->base_.get()) text += " -- " + base->string_->utf8();
    return text;
}

}  // namespace qz
