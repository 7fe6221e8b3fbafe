#include "QzAnno/model/QzAnnoKey.h"

namespace qz {

// Functions that need the palette are defined beside it, in palette/QzAnnoKeyInPalette.cpp.

Ref<QzAnnoKey> QzAnnoKey::keyWithName(const Ref<NSString>& name, const Ref<QzAnnoPalette>& palette) {
    return initWithName(name, palette);
}

Ref<QzAnnoKey> QzAnnoKey::initWithName(const Ref<NSString>& name, const Ref<QzAnnoPalette>& palette) {
    return Ref<QzAnnoKey>(new QzAnnoKey(name ? name : NSString::string(), palette));
}

void QzAnnoKey::setName(const Ref<NSString>& name) {
    annoname_ = name ? name : NSString::string();
}

}  // namespace qz
