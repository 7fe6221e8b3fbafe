#pragma once

#include <map>
#include <memory>
#include <string>

#include "QzAnno/platform/foundation/NSString.h"

class QMimeData;

namespace qz {

/// Data on its way from one view to another, under named types, as property lists.
class NSPasteboard final : public NSObject {
public:
    /// The pasteboard of drags that begin in this process.
    static const Ref<NSPasteboard>& dragPasteboard();
    /// A pasteboard of its own.
    static Ref<NSPasteboard> init();
    /// What a drag brings along.
    static Ref<NSPasteboard> pasteboardWithMimeData(const QMimeData& data);

    /// Empties the pasteboard and announces the type.
    void declareType(const Ref<NSString>& type);
    /// Whether the type is declared, or came with a drag; its data may be missing all the same.
    bool offersType(const Ref<NSString>& type) const;
    /// False for a type that has not been declared, and for what is no property list.
    bool setPropertyList(const Ref<NSObject>& propertyList, const Ref<NSString>& forType);
    /// None when there is none or it cannot be read.
    Ref<NSObject> propertyListForType(const Ref<NSString>& type) const;

    /// For the toolkit, which becomes the owner.
    QMimeData* newMimeData() const;

    std::string className() const override { return "NSPasteboard"; }

private:
    NSPasteboard() = default;

    // Type to the list's XML form; empty until it is set.
    std::map<std::string, std::string> contents_;
};

}  // namespace qz
