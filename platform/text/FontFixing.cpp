#include "platform/text/FontFixing.h"

#include <algorithm>

#include "platform/text/FontFallback.h"
#include "platform/text/TextBreaker.h"

namespace qz {
namespace {

constexpr float kDefaultPointSize = 12.0f;
// How far ahead a fallback font is asked to serve: enough to tell Japanese from Chinese, little enough to be
// remembered.
constexpr uint32_t kUnitsAheadMax = 24;

uint32_t clusterEnd(const std::vector<uint8_t>& clusters, uint32_t start) {
    uint32_t end = start + 1;
    while (end < clusters.size() && !clusters[end]) ++end;
    return end;
}

/// A font for the cluster that the asked one lacks, best one for the clusters behind it as well.
Ref<NSFont> fallbackFont(const Ref<NSFont>& font, std::u16string_view text, const std::vector<uint8_t>& clusters,
                         uint32_t start, uint32_t end) {
    uint32_t stretchEnd = end;
    while (stretchEnd < text.size()) {
        const uint32_t next = clusterEnd(clusters, stretchEnd);
        if (next - start > kUnitsAheadMax || font->coversText(text.substr(stretchEnd, next - stretchEnd))) break;
        stretchEnd = next;
    }
    const std::u16string_view cluster = text.substr(start, end - start);
    const Ref<NSFont> forStretch = fontForText(font, text.substr(start, stretchEnd - start));
    return forStretch->coversText(cluster) ? forStretch : fontForText(font, cluster);
}

}  // namespace

Ref<NSFont> defaultFont() {
    return NSFont::systemFontOfSize(kDefaultPointSize);
}

std::vector<FontStretch> fontsForText(const Ref<NSFont>& font, std::u16string_view text) {
    const auto length = static_cast<uint32_t>(text.size());
    if (font->coversText(text)) return {{length, font}};

    std::vector<FontStretch> stretches;
    Ref<NSFont> fallback;
    const std::vector<uint8_t> clusters = TextBreaker().clustersInText(text);
    for (uint32_t start = 0, end = 0; start < length; start = end) {
        end = clusterEnd(clusters, start);
        const std::u16string_view cluster = text.substr(start, end - start);
        const bool isCovered = font->coversText(cluster);
        if (!isCovered && !(fallback && fallback->coversText(cluster))) {
            fallback = fallbackFont(font, text, clusters, start, end);
        }
        const Ref<NSFont>& serving = isCovered ? font : fallback;
        if (!stretches.empty() && stretches.back().font->isEqual(*serving))
            stretches.back().end = end;
        else
            stretches.push_back({end, serving});
    }
    return stretches;
}

}  // namespace qz
