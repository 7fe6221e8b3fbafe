#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

bool MutableSupport::setPalette(QzAnnoKey& key, const Ref<KeyPalette>& palette) {
    if (key.valid()) return false;
    key.palette_ = palette;
    return true;
}

bool MutableSupport::clearPalette(QzAnnoKey& key, const Ref<KeyPalette>& palette) {
    if (key.palette_.lock() != palette) return false;
    key.palette_.reset();
    return true;
}

bool MutableSupport::setAnnotations(QzAnnoString& string, const Ref<NSDictionary>& annotations, bool doCopy) {
    if (!annotations) return false;
    ObjectMap entries;
    for (const auto& [key, value, hash] : annotations->map().entries()) {
        const auto bits = std::dynamic_pointer_cast<QzAnnoBits>(value);
        if (!bits || !dynamic_cast<const QzAnnoKey*>(key.get())) return false;
        entries.set(key, doCopy ? bits->copy() : bits);
    }
    string.annotations_ = NSDictionary::dictionaryWithMap(std::move(entries));
    return true;
}

void MutableSupport::setString(QzAnnoString& string, const Ref<NSString>& text) {
    string.s_ = text ? text : NSString::string();
}

}  // namespace qz
