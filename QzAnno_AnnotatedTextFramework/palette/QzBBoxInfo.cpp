#include "QzAnno/palette/QzBBoxInfo.h"

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

Ref<QzBBoxInfo> QzBBoxInfo::initWithColor(const Ref<NSColor>& color, int32_t type) {
    if (!color) return {};
    return Ref<QzBBoxInfo>(new QzBBoxInfo(color, type));
}

std::string QzBBoxInfo::description() const {
    return stringWithFormat("<QzBBoxInfo type %i, %@>", {type_, col_});
}

}  // namespace qz
