#pragma once

#include <string>

#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

/// Turns objects into text for display, and text back into objects.
class NSFormatter : public NSObject {
public:
    /// The object's plain text; an object that has none is returned as it is.
    virtual Ref<NSObject> stringForObjectValue(const Ref<NSObject>& object) const = 0;
    /// None when the object is of no kind that the formatter knows.
    virtual Ref<NSAttributedString> attributedStringForObjectValue(
        const Ref<NSObject>& object, const Ref<NSDictionary>& withDefaultAttributes) const = 0;
    /// Whether `objectValue` received an object; `errorDescription` may receive the reason why not.
    virtual bool getObjectValue(Ref<NSObject>& objectValue, const Ref<NSObject>& forString,
                                std::string* errorDescription) const = 0;
};

}  // namespace qz
