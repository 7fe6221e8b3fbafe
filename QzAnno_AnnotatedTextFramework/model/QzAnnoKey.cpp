#include "QzAnno/model/QzAnnoKey.h"

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {

Ref<QzAnnoKey> QzAnnoKey::keyWithName(const Ref<NSString>& name, const Ref<KeyPalette>& palette) {
    return initWithName(name, palette);
}

Ref<QzAnnoKey> QzAnnoKey::initWithName(const Ref<NSString>& name, const Ref<KeyPalette>& palette) {
    return Ref<QzAnnoKey>(new QzAnnoKey(name ? name : NSString::string(), palette));
}

void QzAnnoKey::setName(const Ref<NSString>& name) {
    annoname_ = name ? name : NSString::string();
}

Ref<QzAnnoPalette> QzAnnoKey::palette() const {
    const Ref<KeyPalette> owner = palette_.lock();
    return owner ? owner->palette() : nullptr;
}

bool QzAnnoKey::isDefault() const {
    const Ref<KeyPalette> owner = palette_.lock();
    return owner && owner->isDefaultKey(*this);
}

std::string QzAnnoKey::description() const {
    const Ref<KeyPalette> owner = palette_.lock();
    return stringWithFormat("%@ (Palette %i)", {name(), owner ? owner->serialNumber() : 0});
}

}  // namespace qz
