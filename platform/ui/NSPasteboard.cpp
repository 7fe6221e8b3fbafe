#include "QzAnno/platform/ui/NSPasteboard.h"

#include <QMimeData>

#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/ui/QtValues.h"

namespace qz {

Ref<NSPasteboard> NSPasteboard::init() {
    return Ref<NSPasteboard>(new NSPasteboard);
}

const Ref<NSPasteboard>& NSPasteboard::dragPasteboard() {
    static const Ref<NSPasteboard> pasteboard = init();
    return pasteboard;
}

Ref<NSPasteboard> NSPasteboard::pasteboardWithMimeData(const QMimeData& data) {
    const Ref<NSPasteboard> pasteboard = init();
    for (const QString& format : data.formats()) {
        pasteboard->contents_[format.toStdString()] = data.data(format).toStdString();
    }
    return pasteboard;
}

void NSPasteboard::declareType(const Ref<NSString>& type) {
    contents_.clear();
    contents_[type->utf8()] = {};
}

bool NSPasteboard::offersType(const Ref<NSString>& type) const {
    return contents_.contains(type->utf8());
}

bool NSPasteboard::setPropertyList(const Ref<NSObject>& propertyList, const Ref<NSString>& forType) {
    const auto found = contents_.find(forType->utf8());
    if (found == contents_.end()) return false;
    const Ref<NSData> data = NSPropertyListSerialization::dataFromPropertyList(propertyList, NSPropertyListFormat::xml);
    if (data) found->second = data->view();
    return data != nullptr;
}

Ref<NSObject> NSPasteboard::propertyListForType(const Ref<NSString>& type) const {
    const auto found = contents_.find(type->utf8());
    if (found == contents_.end() || found->second.empty()) return {};
    return NSPropertyListSerialization::propertyListFromData(*NSData::dataWithBytes(std::string_view(found->second)));
}

QMimeData* NSPasteboard::newMimeData() const {
    auto* data = new QMimeData;
    for (const auto& [type, content] : contents_) {
        data->setData(toQt(type), QByteArray(content.data(), static_cast<qsizetype>(content.size())));
    }
    return data;
}

}  // namespace qz
