#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

void encodePalette(const NSObject& object, NSArchiver& archiver) {
    static_cast<const QzAnnoPalette&>(object).encodeWithCoder(archiver);
}

Ref<NSObject> decodePalette(NSUnarchiver& unarchiver) {
    return QzAnnoPalette::initWithCoder(unarchiver);
}

const CodedClassRegistration registration({.name = "QzAnnoPalette", .encode = encodePalette, .decode = decodePalette});

}  // namespace

void QzAnnoPalette::encodeWithCoder(NSArchiver& archiver) const {
    std::vector<Ref<NSObject>> annotations;
    for (const Ref<QzAnnoKey>& key : *priorities_) annotations.push_back(annoOf(key));
    archiver.encodeObject(globals_) && archiver.encodeObject(NSArray::arrayWithObjects(std::move(annotations)));
}

Ref<QzAnnoPalette> QzAnnoPalette::initWithCoder(NSUnarchiver& unarchiver) {
    if (unarchiver.versionForClassName("QzAnnoPalette") != 0) return {};
    const auto globals = unarchiver.decodeObjectOfClass<QzAnno>("QzAnno");
    const auto annotations = unarchiver.decodeObjectOfClass<NSArray>("NSArray");
    if (!globals || !annotations) unarchiver.fail("a palette needs its global annotation and an array of the others");
    if (unarchiver.hasFailed()) return {};
    const Ref<QzAnnoPalette> palette = empty();
    // Only the attributes of the global annotation count: its key is the palette's own.
    palette->globals_ = QzAnno::initWithKey(palette->globals_->annokey(), globals->allAttributes());
    return palette->takeDecoded(*annotations, unarchiver) ? palette : nullptr;
}

bool QzAnnoPalette::takeDecoded(const NSArray& annotations, NSUnarchiver& unarchiver) {
    if (annotations.count() > size_t{Limits::kAnnotationsMax}) {
        unarchiver.fail("the palette has " + std::to_string(annotations.count()) + " annotations; " +
                        std::to_string(Limits::kAnnotationsMax) + " is the limit");
        return false;
    }
    for (const Ref<NSObject>& element : annotations.elements()) {
        const auto anno = std::dynamic_pointer_cast<QzAnno>(element);
        if (!anno) {
            unarchiver.fail("an object of class " + element->className() + " among the annotations");
            return false;
        }
        const Ref<QzAnnoKey> key = anno->annokey();
        // An annotation that occurs twice keeps its first place.
        if (!MutableSupport::setPalette(*key, refTo(*this))) NSLog("nonglobal %@ would not set palette\n", {key});
        if (contains(key)) continue;
        priorities_->push_back(key);
        reverse_lookup_->set(key, anno);
    }
    return true;
}

}  // namespace qz
