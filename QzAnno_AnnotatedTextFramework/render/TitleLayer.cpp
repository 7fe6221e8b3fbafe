#include "QzAnno_AnnotatedTextFramework/render/TitleLayer.h"

#include <cmath>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

TitleLayer TitleLayer::numbered(uint32_t number, const NSDictionary& attributes) {
    const bool isFirst = number == kFirst;
    TitleLayer layer;
    layer.color =
        attributes.objectForKey<NSColor>(isFirst ? *QzBackgroundColorAttribute : *QzBackground2ColorAttribute);
    const auto width =
        numberFrom(attributes.objectForKey(isFirst ? *QzBackgroundWidthAttribute : *QzBackground2WidthAttribute));
    if (width && std::isfinite(width->floatValue())) layer.width = width->floatValue();
    const auto offset =
        attributes.objectForKey<NSString>(isFirst ? *QzBackgroundOffsetAttribute : *QzBackground2OffsetAttribute);
    if (offset) layer.offset = NSPointFromString(*offset);
    return layer;
}

}  // namespace qz
