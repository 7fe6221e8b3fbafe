#pragma once

#include "QzAnno/platform/foundation/NSObject.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// An immutable address as it is written, and the one that it is relative to, if any; nothing is parsed or resolved.
/// Equal when both are.
class NSURL final : public ObjectHolder {
public:
    /// No string is the empty one.
    static Ref<NSURL> URLWithString(Ref<NSString> string, Ref<NSURL> relativeToURL = {});

    /// As it was given; never none.
    const Ref<NSString>& relativeString() const { return string_; }
    /// None for an address that stands alone.
    const Ref<NSURL>& baseURL() const { return base_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return string_->hash(); }
    /// "page.html -- https://example.com/" for a relative one.
    std::string description() const override;
    std::string className() const override { return "NSURL"; }

private:
    NSURL(Ref<NSString> string, Ref<NSURL> base) : string_(std::move(string)), base_(std::move(base)) {}

    const Ref<NSString> string_;
    const Ref<NSURL> base_;
};

}  // namespace qz
