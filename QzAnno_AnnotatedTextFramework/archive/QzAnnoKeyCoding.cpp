// The coded form of keys is defined here and not in the model, since only the archivers in this folder can write and
// read it.
#include "QzAnno/archive/QzAnnoArchiver.h"
#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/platform/foundation/NSAlertPanel.h"

namespace qz {
namespace {

void encodeKey(const NSObject& object, NSArchiver& archiver) {
    if (auto* const tokening = dynamic_cast<QzTokeningArchiver*>(&archiver))
        tokening->encodeTokenObject(static_cast<const QzAnnoKey&>(object));
    else
        archiver.fail("an annotation key, which only a QzTokeningArchiver can write");
}

Ref<NSObject> decodeToken(NSUnarchiver& unarchiver) {
    if (auto* const tokening = dynamic_cast<QzTokeningUnarchiver*>(&unarchiver)) return tokening->decodeTokenObject();
    unarchiver.fail("an annotation key that stands for a palette's; read it with a QzTokeningUnarchiver");
    return {};
}

// The form in older archives: only the name.
Ref<NSObject> decodeName(NSUnarchiver& unarchiver) {
    const auto* const bound = dynamic_cast<const QzAnnoUnarchiver*>(&unarchiver);
    if (!bound) {
        unarchiver.fail("an annotation key of the older form, a mere name; read it with a QzAnnoUnarchiver");
        return {};
    }
    const auto name = unarchiver.decodeObjectOfClass<NSString>("NSString");
    if (unarchiver.hasFailed()) return {};
    if (!name) {
        NSRunCriticalAlertPanel({.title = "Internal Error",
                                 .message = "Nil annokey name from file.  Wha?",
                                 .defaultButton = "sweet",
                                 .alternateButton = "nilly",
                                 .otherButton = "dilly"});
        return {};
    }
    const Ref<QzAnnoKey> known = bound->palette() ? bound->palette()->findAnnoKey(name) : nullptr;
    return known ? known : QzAnnoKey::initWithName(name);
}

Ref<NSObject> decodeKey(NSUnarchiver& unarchiver) {
    const std::optional<int32_t> version = unarchiver.versionForClassName("QzAnnoKey");
    if (version == 1) return decodeToken(unarchiver);
    if (version == 0) return decodeName(unarchiver);
    return {};
}

const CodedClassRegistration registration(
    {.name = "QzAnnoKey", .version = 1, .encode = encodeKey, .decode = decodeKey});

}  // namespace
}  // namespace qz
