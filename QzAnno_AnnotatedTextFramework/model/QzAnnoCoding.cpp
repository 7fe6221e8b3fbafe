#include "QzAnno/model/QzAnno.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"

namespace qz {
namespace {

void encodeAnno(const NSObject& object, NSArchiver& archiver) {
    const auto& anno = static_cast<const QzAnno&>(object);
    archiver.encodeObject(anno.name());
    if (!archiver.encodeObject(anno.allAttributes()))
        archiver.addPlaceOfFailure("attributes of " + anno.name()->utf8());
}

// The key is unbound; a palette that adds the annotation binds or replaces it.
Ref<QzAnno> decodedAnno(NSUnarchiver& unarchiver) {
    if (unarchiver.versionForClassName("QzAnno") != 0) return {};
    const auto name = unarchiver.decodeObjectOfClass<NSString>("NSString");
    const auto attributes = unarchiver.decodeObjectOfClass<NSDictionary>("NSDictionary");
    if (unarchiver.hasFailed()) return {};
    return QzAnno::initWithKey(QzAnnoKey::initWithName(name), attributes);
}

Ref<NSObject> decodeAnno(NSUnarchiver& unarchiver) {
    return decodedAnno(unarchiver);
}

Ref<NSObject> decodeMutableAnno(NSUnarchiver& unarchiver) {
    const Ref<QzAnno> anno = decodedAnno(unarchiver);
    return anno ? anno->mutableCopy() : nullptr;
}

const CodedClassRegistration registration({.name = "QzAnno", .encode = encodeAnno, .decode = decodeAnno});
const CodedClassRegistration mutableRegistration(
    {.name = "QzMutableAnno", .superclassName = "QzAnno", .encode = encodeAnno, .decode = decodeMutableAnno});

}  // namespace
}  // namespace qz
