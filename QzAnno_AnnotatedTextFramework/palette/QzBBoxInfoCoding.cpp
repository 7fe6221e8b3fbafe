#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {
namespace {

void encodeBBox(const NSObject& object, NSArchiver& archiver) {
    const auto& box = static_cast<const QzBBoxInfo&>(object);
    archiver.encodeObject(box.color());
    archiver.encodeInt(box.type());
}

Ref<NSObject> decodeBBox(NSUnarchiver& unarchiver) {
    if (unarchiver.versionForClassName("QzBBoxInfo") != 0) return {};
    const auto color = unarchiver.decodeObjectOfClass<NSColor>("NSColor");
    const std::optional<int32_t> type = unarchiver.decodeInt();
    if (!color) unarchiver.fail("the appearance of a text's box without its colour");
    return type ? QzBBoxInfo::initWithColor(color, *type) : nullptr;
}

const CodedClassRegistration registration({.name = "QzBBoxInfo", .encode = encodeBBox, .decode = decodeBBox});

}  // namespace
}  // namespace qz
