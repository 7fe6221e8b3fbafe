#pragma once

#include "QzAnno/platform/foundation/NSObject.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// An immutable address as written, and the address it is relative to, if any; nothing is parsed or resolved. Two are
/// equal if both parts are.
class NSURL final : public ObjectHolder {
public:
    /// A null string counts as empty.
    static Ref<NSURL> URLWithString(Ref<NSString> string, Ref<NSURL> relativeToURL = {});

    /// The string as given; never null.
    const Ref<NSString>& relativeString() const { return string_; }
    /// Null for an address that is not relative.
    const Ref<NSURL>& baseURL() const { return base_; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return string_->hash(); }
    /// "page.html -- https://example.com/" for a relative address.
    std::string description() const override;
    std::string className() const override { return "NSURL"; }

private:
    NSURL(Ref<NSString> string, Ref<NSURL> base) : string_(std::move(string)), base_(std::move(base)) {}

    const Ref<NSString> string_;
    const Ref<NSURL> base_;
};

}  // namespace qz
