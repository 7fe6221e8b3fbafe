// Positions of characters for carets and selections.

#include <algorithm>

#include <hb-ot.h>

#include "platform/text/FontFace.h"
#include "platform/text/TextLayout.h"

namespace qz {
namespace {

/// The boundaries between the `parts` parts of a ligature, in points from the left edge of the glyph, ascending: as
/// marked by the font, else at equal shares of its width.
std::vector<float> caretsOfLigature(const NSFont& font, NSGlyph glyph, bool isRightToLeft, float width, size_t parts) {
    std::vector<float> carets;
    std::vector<hb_position_t> marked(parts - 1);
    unsigned int count = static_cast<unsigned int>(marked.size());
    const hb_direction_t direction = isRightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR;
    const unsigned int all =
        hb_ot_layout_get_ligature_carets(font.face().shaper(), direction, glyph, 0, &count, marked.data());
    const double scale = font.pointSize() / font.face().unitsPerEm();
    const bool isMarked = all == parts - 1 && count == all;
    for (size_t i = 1; i < parts; ++i) {
        const float share = width * static_cast<float>(i) / static_cast<float>(parts);
        const float caret = isMarked ? static_cast<float>(scale * marked[i - 1]) : share;
        carets.push_back(std::clamp(caret, 0.0f, std::max(0.0f, width)));
    }
    std::ranges::sort(carets);
    return carets;
}

}  // namespace

void TextLayout::addCaretCells(const Line& line, uint32_t firstGlyph, uint32_t lastGlyph, uint32_t charactersEnd,
                               std::vector<CaretCell>& cells) const {
    const PlacedGlyph& first = glyphs_[firstGlyph];
    float left = first.pen, width = 0;
    for (uint32_t i = firstGlyph; i < lastGlyph; ++i) {
        left = std::min(left, glyphs_[i].pen);
        width += glyphs_[i].advance;
    }
    left += line.fragment.origin.x;

    const Entry& entry = paragraphs_[line.paragraph];
    std::vector<uint32_t> starts = {first.character};
    for (uint32_t i = first.character + 1; i < charactersEnd; ++i) {
        if (entry.paragraph->breaks()[i - entry.location] & TextBreak::clusterStart) starts.push_back(i);
    }
    starts.push_back(charactersEnd);
    const size_t parts = starts.size() - 1;
    const std::vector<StyleRun>& styles = entry.paragraph->styles();
    const NSFont& font = *styles[entry.paragraph->styleIndexAt(first.character - entry.location)].font;
    std::vector<float> edges = {0};
    if (parts > 1) {
        for (const float caret : caretsOfLigature(font, first.glyph, first.isRightToLeft, width, parts)) {
            edges.push_back(caret);
        }
    }
    edges.push_back(width);
    for (size_t part = 0; part < parts; ++part) {
        const size_t fromLeft = first.isRightToLeft ? parts - 1 - part : part;
        cells.push_back({{starts[part], starts[part + 1] - starts[part]},
                         left + edges[fromLeft],
                         left + edges[fromLeft + 1],
                         first.isRightToLeft});
    }
}

std::vector<CaretCell> TextLayout::caretCells(const Line& line) const {
    std::vector<CaretCell> cells;
    const auto linesEnd = static_cast<uint32_t>(line.glyphs.end());
    for (uint32_t first = line.glyphs.location, last = 0; first < linesEnd; first = last) {
        last = first + 1;
        while (last < linesEnd && glyphs_[last].character == glyphs_[first].character) ++last;
        const auto charactersEnd =
            last < linesEnd ? glyphs_[last].character : static_cast<uint32_t>(line.characters.end());
        addCaretCells(line, first, last, charactersEnd, cells);
    }
    return cells;
}

}  // namespace qz
