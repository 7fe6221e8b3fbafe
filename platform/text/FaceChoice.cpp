#include "platform/text/FaceChoice.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "platform/text/FontconfigRef.h"

namespace qz {

std::vector<FaceChoice> facesWithTraits(const InstalledFont& font, FontTraits traits,
                                        std::span<const InstalledFont* const> family) {
    const bool isBold = traits.bold.value_or(font.isBold());
    const bool isItalic = traits.italic.value_or(font.isItalic());
    double weight = font.weight;
    if (traits.bold && *traits.bold) weight = std::max<double>(weight, FC_WEIGHT_BOLD);
    if (!isBold && font.isBold()) weight = FC_WEIGHT_REGULAR;
    const int slant = !isItalic ? FC_SLANT_ROMAN : font.isItalic() ? font.slant : FC_SLANT_ITALIC;

    const auto distance = [&](const FaceChoice& choice) {
        const InstalledFont& candidate = *choice.font;
        return std::tuple(std::abs(candidate.width - font.width), candidate.isBold() != isBold,
                          candidate.isItalic() != isItalic, std::abs(candidate.weight - weight),
                          candidate.slant != slant);
    };
    std::vector<FaceChoice> choices;
    for (const InstalledFont* const candidate : family) {
        if (candidate->isColour != font.isColour) continue;
        choices.push_back({candidate, {isBold && !candidate->isBold(), isItalic && !candidate->isItalic()}});
    }
    std::ranges::stable_sort(choices, {}, distance);
    return choices;
}

}  // namespace qz
