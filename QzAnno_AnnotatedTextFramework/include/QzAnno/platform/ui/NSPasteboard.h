#pragma once

#include <map>
#include <memory>
#include <string>

#include "QzAnno/platform/foundation/NSString.h"

class QMimeData;

namespace qz {

/// Data that one view hands to another, as property lists under named types.
class NSPasteboard final : public NSObject {
public:
    /// The pasteboard of drags that start in this process.
    static const Ref<NSPasteboard>& dragPasteboard();
    /// A private pasteboard.
    static Ref<NSPasteboard> init();
    /// A pasteboard with the contents of a drag.
    static Ref<NSPasteboard> pasteboardWithMimeData(const QMimeData& data);

    /// Empties the pasteboard and announces the type.
    void declareType(const Ref<NSString>& type);
    /// Whether the type was declared or came with a drag; its data may still be missing.
    bool offersType(const Ref<NSString>& type) const;
    /// Returns false if the type has not been declared or the object is not a property list.
    bool setPropertyList(const Ref<NSObject>& propertyList, const Ref<NSString>& forType);
    /// Returns null if the data is missing or cannot be read.
    Ref<NSObject> propertyListForType(const Ref<NSString>& type) const;

    /// For the toolkit, which takes ownership.
    QMimeData* newMimeData() const;

    std::string className() const override { return "NSPasteboard"; }

private:
    NSPasteboard() = default;

    // Types to property lists in XML; empty until set.
    std::map<std::string, std::string> contents_;
};

}  // namespace qz
