#pragma once

#include <string>

#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

/// Turns objects into text for display, and text back into objects.
class NSFormatter : public NSObject {
public:
    /// The object's plain text; an object without one is returned itself.
    virtual Ref<NSObject> stringForObjectValue(const Ref<NSObject>& object) const = 0;
    /// Returns null if the formatter does not know the kind of object.
    virtual Ref<NSAttributedString> attributedStringForObjectValue(
        const Ref<NSObject>& object, const Ref<NSDictionary>& withDefaultAttributes) const = 0;
    /// Returns whether `objectValue` received an object; if not, `errorDescription` may receive the reason.
    virtual bool getObjectValue(Ref<NSObject>& objectValue, const Ref<NSObject>& forString,
                                std::string* errorDescription) const = 0;
};

}  // namespace qz
