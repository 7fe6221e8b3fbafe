#include "captions/KeyExchange.h"

#include "QzAnno/model/QzMutableAnnoString.h"

namespace qz {

Ref<QzAnnoString> withKeys(const QzAnnoString& string,
                           const std::function<Ref<QzAnnoKey>(const Ref<QzAnnoKey>&)>& keyFor) {
    const auto exchanged = QzMutableAnnoString::initWithString(string.string());
    for (const QzAnnoString::Run& run : string.runs()) {
        for (const auto& key : run.keys->objects<QzAnnoKey>()) exchanged->addAnno(keyFor(key), run.range);
    }
    return exchanged->copy();
}

}  // namespace qz
