#include "platform/graphics/Paint.h"

namespace qz {

StraightColor mainColorOf(const Paint& paint) {
    if (const auto* const color = std::get_if<StraightColor>(&paint)) return *color;
    const auto* const gradient = std::get_if<Gradient>(&paint);
    return gradient && !gradient->stops.empty() ? gradient->stops.front().color : StraightColor{};
}

}  // namespace qz
