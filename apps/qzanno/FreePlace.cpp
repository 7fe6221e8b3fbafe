#include "apps/qzanno/FreePlace.h"

#include <algorithm>

namespace qz::tool {
namespace {

// Boxes of neighbouring lines may touch, and sizes are rounded to whole points.
constexpr float kTouch = 1;

bool cover(const NSRect& a, const NSRect& b) {
    return a.origin.x + kTouch < b.origin.x + b.size.width && b.origin.x + kTouch < a.origin.x + a.size.width &&
           a.origin.y + kTouch < b.origin.y + b.size.height && b.origin.y + kTouch < a.origin.y + a.size.height;
}

/// The nearest free place in one direction.
std::optional<float> freeTop(NSRect box, const std::vector<NSRect>& others, NSSize screen, bool isUpward) {
    while (box.origin.y >= 0 && box.origin.y + box.size.height <= screen.height + kTouch) {
        const auto covered = std::ranges::find_if(others, [&](const NSRect& other) { return cover(box, other); });
        if (covered == others.end()) return box.origin.y;
        box.origin.y = isUpward ? covered->origin.y - box.size.height : covered->origin.y + covered->size.height;
    }
    return {};
}

}  // namespace

std::optional<float> freeTop(const NSRect& box, const std::vector<NSRect>& others, NSSize screen) {
    const bool isInLowerHalf = 2 * box.origin.y + box.size.height > screen.height;
    const std::optional<float> inward = freeTop(box, others, screen, isInLowerHalf);
    return inward ? inward : freeTop(box, others, screen, !isInLowerHalf);
}

}  // namespace qz::tool
