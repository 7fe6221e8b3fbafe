#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>

#include <fontconfig/fontconfig.h>
#include <unicode/unistr.h>

#include "QzAnno/platform/text/FontLibrary.h"

namespace qz {
namespace {

constexpr size_t kDistanceMax = 2;
// In shorter names, two letters make a different word.
constexpr size_t kComparedUnitsMin = 5;

/// The name without case, blanks and hyphens.
std::u16string squeezed(std::string_view name) {
    icu::UnicodeString text = icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())});
    text.foldCase();
    std::u16string kept;
    for (int32_t i = 0; i < text.length(); ++i) {
        if (text[i] != u' ' && text[i] != u'-' && text[i] != u'_') kept += text[i];
    }
    return kept;
}

/// The number of letters to change, insert or delete to get from one name to the other.
size_t distanceOf(std::u16string_view a, std::u16string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t k = 0; k < b.size(); ++k) {
            const size_t changed = diagonal + (a[i] != b[k]);
            diagonal = row[k + 1];
            row[k + 1] = std::min({changed, row[k] + 1, row[k + 1] + 1});
        }
    }
    return row[b.size()];
}

/// The distance of a family from a name: 0 if the name begins with it; no value if it does not fit.
std::optional<size_t> misfit(std::u16string_view family, std::u16string_view name) {
    if (family.empty()) return {};
    if (name.starts_with(family)) return 0;
    if (family.size() < kComparedUnitsMin || name.size() + kDistanceMax < family.size()) return {};
    // The style follows the family, and the misspelt family may be longer or shorter than the right one.
    size_t distance = kDistanceMax + 1;
    for (size_t length = family.size() - 1; length <= std::min(family.size() + 1, name.size()); ++length) {
        distance = std::min(distance, distanceOf(family, name.substr(0, length)));
    }
    return distance <= kDistanceMax ? std::optional(distance) : std::nullopt;
}

}  // namespace

std::vector<std::string> FontLibrary::namesLike(std::string_view name, size_t count) const {
    const std::u16string asked = squeezed(name);
    std::string family;
    std::tuple<size_t, size_t> best;  // of equals, the longer family
    for (const InstalledFont& font : fonts()) {
        if (font.familyName == family) continue;
        const std::u16string candidate = squeezed(font.familyName);
        const auto distance = misfit(candidate, asked);
        if (!distance) continue;
        const std::tuple rank(*distance, SIZE_MAX - candidate.size());
        if (!family.empty() && best <= rank) continue;
        best = rank;
        family = font.familyName;
    }

    std::vector<const InstalledFont*> members;
    for (const InstalledFont& font : fonts()) {
        if (!family.empty() && font.familyName == family) members.push_back(&font);
    }
    std::ranges::stable_sort(members, {}, [](const InstalledFont* font) {
        return std::tuple(std::abs(font->width - FC_WIDTH_NORMAL), font->slant,
                          std::abs(font->weight - FC_WEIGHT_REGULAR));
    });
    std::vector<std::string> names;
    for (const InstalledFont* font : members) {
        std::string full = font->familyName + "-" + font->styleName;
        if (names.size() < count && std::ranges::find(names, full) == names.end()) names.push_back(std::move(full));
    }
    return names;
}

}  // namespace qz
