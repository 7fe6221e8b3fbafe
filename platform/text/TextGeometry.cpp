// Where characters stand, as selections and insertion points ask.

#include <algorithm>
#include <cmath>

#include <hb-ot.h>

#include "platform/text/FontFace.h"
#include "platform/text/NSLayoutManager.h"
#include "platform/text/TextLayout.h"

namespace qz {
namespace {

/// Where the `parts` parts of a ligature meet, in points from the left edge of the glyph, ascending: as the font marks
/// them, else equal shares of its width.
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

float distance(float value, float from, float to) {
    return std::max({from - value, value - to, 0.0f});
}

}  // namespace

void NSLayoutManager::Layout::addClusterBoxes(const Line& line, uint32_t firstGlyph, uint32_t lastGlyph,
                                              uint32_t charactersEnd, std::vector<ClusterBox>& boxes) const {
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
        boxes.push_back({{starts[part], starts[part + 1] - starts[part]},
                         left + edges[fromLeft],
                         left + edges[fromLeft + 1],
                         first.isRightToLeft});
    }
}

std::vector<NSLayoutManager::Layout::ClusterBox> NSLayoutManager::Layout::clusterBoxes(const Line& line) const {
    std::vector<ClusterBox> boxes;
    const auto linesEnd = static_cast<uint32_t>(line.glyphs.end());
    for (uint32_t first = line.glyphs.location, last = 0; first < linesEnd; first = last) {
        last = first + 1;
        while (last < linesEnd && glyphs_[last].character == glyphs_[first].character) ++last;
        const auto charactersEnd =
            last < linesEnd ? glyphs_[last].character : static_cast<uint32_t>(line.characters.end());
        addClusterBoxes(line, first, last, charactersEnd, boxes);
    }
    std::ranges::stable_sort(boxes, {}, &ClusterBox::left);
    return boxes;
}

std::vector<NSRect> NSLayoutManager::rectArrayForCharacterRange(Range characterRange,
                                                                const NSTextContainer& inTextContainer) const {
    std::vector<NSRect> rects;
    const std::optional<size_t> index = indexOfContainer(inTextContainer);
    if (!index) return rects;
    layout_->layOutContainer(*index);
    for (const Layout::Line& line : layout_->linesOfContainer(*index)) {
        if (intersection(line.characters, characterRange).length == 0) continue;
        const Layout::ClusterBox* before = nullptr;
        const std::vector<Layout::ClusterBox> boxes = layout_->clusterBoxes(line);
        for (const Layout::ClusterBox& box : boxes) {
            if (box.right <= box.left) continue;
            const bool isSelected = intersection(box.characters, characterRange).length > 0;
            if (isSelected && before) {
                rects.back().size.width = box.right - rects.back().origin.x;
            } else if (isSelected) {
                rects.push_back(
                    {{box.left, line.fragment.origin.y}, {box.right - box.left, line.fragment.size.height}});
            }
            before = isSelected ? &box : nullptr;
        }
    }
    return rects;
}

uint32_t NSLayoutManager::characterIndexForPoint(NSPoint point, const NSTextContainer& inTextContainer,
                                                 float* fraction) const {
    if (fraction) *fraction = 0;
    const std::optional<size_t> index = indexOfContainer(inTextContainer);
    const Ref<NSTextStorage> text = textStorage();
    const uint32_t length = text ? text->length() : 0;
    if (!index) return length;
    layout_->layOutContainer(*index);
    const auto toLine = [&](const Layout::Line& line) {
        return distance(point.y, line.fragment.origin.y, line.fragment.maxY());
    };
    const std::span<const Layout::Line> lines = layout_->linesOfContainer(*index);
    const auto line = std::ranges::min_element(lines, {}, toLine);
    if (line == lines.end()) return length;
    const std::vector<Layout::ClusterBox> boxes = layout_->clusterBoxes(*line);
    // What takes no room is met only where nothing else is.
    const auto box = std::ranges::min_element(boxes, {}, [&](const Layout::ClusterBox& candidate) {
        return std::pair(distance(point.x, candidate.left, candidate.right), candidate.left >= candidate.right);
    });
    if (box == boxes.end()) return line->characters.location;
    if (fraction && box->right > box->left) {
        const float share = std::clamp((point.x - box->left) / (box->right - box->left), 0.0f, 1.0f);
        *fraction = std::min(box->isRightToLeft ? 1 - share : share, std::nextafter(1.0f, 0.0f));
    }
    return box->characters.location;
}

}  // namespace qz
