// What a key has to ask its palette for; the model's own layer does not know palettes.
#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {

bool QzAnnoKey::isDefault() const {
    const Ref<QzAnnoPalette> owner = palette();
    return owner && owner->annoKeyAtPriority(0).get() == this;
}

std::string QzAnnoKey::description() const {
    const Ref<QzAnnoPalette> owner = palette();
    return stringWithFormat("%@ (Palette %i)", {name(), owner ? owner->serialNumber() : 0});
}

}  // namespace qz
