#include "QzAnno_AnnotatedTextFramework/render/ExpandRectConstrainedBy.h"

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {
namespace {

// One axis of the rectangle: its start and length.
struct Span {
    float start;
    float length;
};

Span expanded(Span span, int32_t before, int32_t after, float limit) {
    const auto growth = static_cast<float>(int64_t{before} + after);
    Span result = {span.start - static_cast<float>(before), span.length + growth};
    if (result.start < 0) {
        result.length += result.start;
        result.start = 0;
    }
    if (result.start + result.length > limit) result.length = limit - result.start;
    return result;
}

}  // namespace

NSRect ExpandRectConstrainedBy(const NSRect& rect, int32_t left, int32_t right, int32_t top, int32_t bottom,
                               NSSize screen, NSPoint* offset) {
    const Span x = expanded({rect.origin.x, rect.size.width}, left, right, screen.width);
    const Span y = expanded({rect.origin.y, rect.size.height}, top, bottom, screen.height);
    const NSRect result = {{x.start, y.start}, {x.length, y.length}};
    if (offset) *offset = {rect.origin.x - x.start, rect.origin.y - y.start};
    NSLog("Rect %@ expanded to %@, offset %@, screen %@\n",
          {NSStringFromRect(rect), NSStringFromRect(result), offset ? NSStringFromPoint(*offset) : "?"_ns,
           NSStringFromSize(screen)});
    return result;
}

}  // namespace qz
