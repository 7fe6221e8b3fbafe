#include "platform/text/FontFixing.h"

#include <algorithm>

#include "platform/text/FontFace.h"
#include "platform/text/FontFallback.h"
#include "platform/text/TextBreaker.h"
#include "platform/text/TextCoverage.h"

namespace qz {
namespace {

constexpr float kDefaultPointSize = 12.0f;
// How far ahead a fallback font should cover the text: enough to tell Japanese from Chinese, but short enough to be
// cached.
constexpr uint32_t kUnitsAheadMax = 24;

uint32_t clusterEnd(const std::vector<uint8_t>& clusters, uint32_t start) {
    uint32_t end = start + 1;
    while (end < clusters.size() && !clusters[end]) ++end;
    return end;
}

/// Chooses the font of each cluster of a text.
class FontChoice {
public:
    FontChoice(const Ref<NSFont>& font, std::u16string_view text, std::string_view language)
        : font_(font), text_(text), language_(language), clusters_(TextBreaker().clustersInText(text)) {}

    std::vector<FontStretch> stretches() {
        for (uint32_t start = 0, end = 0; start < text_.size(); start = end) {
            end = clusterEnd(clusters_, start);
            const std::u16string_view cluster = text_.substr(start, end - start);
            if (font_->coversText(cluster)) {
                append(end, font_, belongsToAnyScript(cluster));
            } else {
                if (!goesOnServing(cluster)) fallback_ = fallbackFont(start, end);
                append(end, fallback_, false);
            }
        }
        return joined();
    }

private:
    /// A stretch of clusters covered by one font, before neutral stretches join their neighbours.
    struct Piece {
        uint32_t end;
        Ref<NSFont> font;
        bool isNeutral;
    };

    bool goesOnServing(std::u16string_view cluster) const {
        if (!fallback_ || !fallback_->coversText(cluster)) return false;
        // A symbol does not become an emoji by following one.
        return !fallback_->face().hasColourGlyphs() || hasEmojiForm(cluster);
    }

    /// A font for the cluster, preferably one that also covers the following clusters.
    Ref<NSFont> fallbackFont(uint32_t start, uint32_t end) const {
        uint32_t stretchEnd = end;
        while (stretchEnd < text_.size()) {
            const uint32_t next = clusterEnd(clusters_, stretchEnd);
            const std::u16string_view cluster = text_.substr(stretchEnd, next - stretchEnd);
            if (next - start > kUnitsAheadMax || font_->coversText(cluster)) break;
            stretchEnd = next;
        }
        const std::u16string_view cluster = text_.substr(start, end - start);
        const Ref<NSFont> forStretch = fontForText(font_, text_.substr(start, stretchEnd - start), language_);
        return forStretch->coversText(cluster) ? forStretch : fontForText(font_, cluster, language_);
    }

    void append(uint32_t end, const Ref<NSFont>& font, bool isNeutral) {
        if (!pieces_.empty() && pieces_.back().isNeutral == isNeutral && pieces_.back().font->isEqual(*font))
            pieces_.back().end = end;
        else
            pieces_.push_back({end, font, isNeutral});
    }

    /// The font of the pieces around a neutral one, if it is a single fallback font that can show it.
    const Ref<NSFont>& servingFont(size_t index, uint32_t start) const {
        const Piece& piece = pieces_[index];
        if (!piece.isNeutral || index == 0 || index + 1 == pieces_.size()) return piece.font;
        const Ref<NSFont>& around = pieces_[index - 1].font;
        const bool isOne = pieces_[index + 1].font->isEqual(*around) && !around->isEqual(*font_);
        // Digits in an emoji font are parts of keycaps.
        return isOne && !around->face().hasColourGlyphs() && around->coversText(text_.substr(start, piece.end - start))
                   ? around
                   : piece.font;
    }

    std::vector<FontStretch> joined() const {
        std::vector<FontStretch> stretches;
        uint32_t start = 0;
        for (size_t i = 0; i < pieces_.size(); ++i) {
            const Ref<NSFont>& font = servingFont(i, start);
            start = pieces_[i].end;
            if (!stretches.empty() && stretches.back().font->isEqual(*font))
                stretches.back().end = start;
            else
                stretches.push_back({start, font});
        }
        return stretches;
    }

    const Ref<NSFont>& font_;
    const std::u16string_view text_;
    const std::string_view language_;
    const std::vector<uint8_t> clusters_;
    Ref<NSFont> fallback_;
    std::vector<Piece> pieces_;
};

}  // namespace

Ref<NSFont> defaultFont(const NSFont::Library& library) {
    return NSFont::systemFontOfSize(kDefaultPointSize, library);
}

std::vector<FontStretch> fontsForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language) {
    // Drawing would detect a damaged glyph too late for choosing another font.
    font->face().checkGlyphs(text);
    if (font->coversText(text)) return {{static_cast<uint32_t>(text.size()), font}};
    return FontChoice(font, text, language).stretches();
}

}  // namespace qz
