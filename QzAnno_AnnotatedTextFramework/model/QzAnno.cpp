#include "QzAnno/model/QzAnno.h"

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/foundation/Descent.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

Ref<QzAnno> QzAnno::initWithKey(const Ref<QzAnnoKey>& key, const Ref<NSDictionary>& attributes) {
    if (!key) return {};
    return Ref<QzAnno>(new QzAnno(key, attributes ? attributes : NSDictionary::dictionary()));
}

Ref<NSSet> QzAnno::attributeNames() const {
    return NSSet::setWithMap(attributes_->map());
}

void QzAnno::setKey(const Ref<QzAnnoKey>& key) {
    if (key && !key_->valid()) key_ = key;
}

void QzAnno::setAttributes(Ref<NSDictionary> attributes) {
    attributes_ = attributes ? std::move(attributes) : NSDictionary::dictionary();
}

Ref<QzAnno> QzAnno::copy() const {
    return initWithKey(key_, attributes_);
}

Ref<QzMutableAnno> QzAnno::mutableCopy() const {
    return QzMutableAnno::initWithAnno(*this);
}

std::string QzAnno::description() const {
    std::string text = stringWithFormat("Annotation \"%@\" (%@)", {name(), key_});
    for (const ObjectMap::Entry& entry : attributes_->map().entries()) {
        text += stringWithFormat("\t%@ = %@\n", {heldDescription(entry.key.get()), heldDescription(entry.value.get())});
    }
    return text;
}

Ref<QzMutableAnno> QzMutableAnno::initWithAnno(const QzAnno& anno) {
    return Ref<QzMutableAnno>(new QzMutableAnno(anno.annokey(), anno.allAttributes()));
}

void QzMutableAnno::copyFromAnno(const QzAnno& anno) {
    setName(anno.name());
    setAttributes(anno.allAttributes());
}

void QzMutableAnno::setAttribute(const Ref<NSString>& name, const Ref<NSObject>& toObject) {
    if (!name) return;
    ObjectMap attributes = allAttributes()->map();
    if (toObject) {
        attributes.set(name, toObject);
    } else {
        attributes.remove(*name);
    }
    setAttributes(NSDictionary::dictionaryWithMap(std::move(attributes)));
}

}  // namespace qz
