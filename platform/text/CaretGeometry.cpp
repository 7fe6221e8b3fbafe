#include "platform/text/CaretGeometry.h"

#include <algorithm>
#include <cmath>

#include "platform/text/AttributeNames.h"
#include "platform/text/Paragraph.h"
#include "platform/text/ParagraphRange.h"
#include "platform/text/TextBreaker.h"

namespace qz {
namespace {

// Cells that are closer than this are shown as one, in points.
constexpr float kGapTolerance = 0.05f;
// How wide a selected line end shows, as a part of the line's height.
constexpr float kSelectedLineEnd = 0.25f;

bool isLineEnd(char16_t unit) {
    return endsLine(unit) || unit == u'\n' || unit == u'\r' || unit == 0x0085 || unit == 0x2029;
}

/// The room of the glyphs of one cluster.
struct GlyphCluster {
    Range characters;
    float left = 0;
    float width = 0;
    bool isRightToLeft = false;
};

GlyphCluster clusterOf(const NSLayoutManager& manager, uint32_t glyph, Range& glyphs, float lineLeft) {
    GlyphCluster cluster;
    cluster.characters = manager.characterRangeForGlyphRange({glyph, 1}, &glyphs);
    cluster.isRightToLeft = manager.isRightToLeftGlyphAtIndex(glyph);
    bool hasLeft = false;
    for (uint32_t i = glyphs.location; i < glyphs.end(); ++i) {
        // A mark hangs over its base and takes no room; its place says nothing about the cluster's.
        const float advance = manager.advanceForGlyphAtIndex(i);
        const float left = lineLeft + manager.locationForGlyphAtIndex(i).x;
        if (advance == 0 && hasLeft) continue;
        cluster.left = hasLeft && cluster.width != 0 ? std::min(cluster.left, left) : left;
        hasLeft = true;
        cluster.width += advance;
    }
    return cluster;
}

/// Shares the cluster's room out among the grapheme clusters that begin in it; what begins none belongs to the cell
/// before.
void addCells(const GlyphCluster& cluster, const std::vector<uint8_t>& clusterStarts, uint32_t lineStart,
              uint32_t textEnd, std::vector<CaretCell>& cells) {
    std::vector<uint32_t> starts;
    const uint64_t end = std::min<uint64_t>(cluster.characters.end(), textEnd);
    for (uint32_t i = cluster.characters.location; i < end; ++i) {
        if (i == lineStart || clusterStarts[i - lineStart]) starts.push_back(i);
    }
    if (starts.empty()) {
        if (cells.empty() || cluster.characters.location >= textEnd) return;
        CaretCell& cell = cells.back();
        cell.characters.length = static_cast<uint32_t>(end) - cell.characters.location;
        if (cluster.width != 0) {
            cell.left = std::min(cell.left, cluster.left);
            cell.right = std::max(cell.right, cluster.left + cluster.width);
        }
        return;
    }
    const auto count = static_cast<float>(starts.size());
    for (size_t i = 0; i < starts.size(); ++i) {
        const uint64_t next = i + 1 < starts.size() ? starts[i + 1] : end;
        const auto place = static_cast<float>(cluster.isRightToLeft ? starts.size() - 1 - i : i);
        const float left = cluster.left + cluster.width * place / count;
        cells.push_back({{starts[i], static_cast<uint32_t>(next - starts[i])},
                         left,
                         left + cluster.width / count,
                         cluster.isRightToLeft});
    }
}

bool paragraphIsRightToLeft(const NSAttributedString& text, uint32_t index) {
    const Range paragraph = paragraphRange(text.characters(), {index, 0});
    auto direction = NSWritingDirection::natural;
    if (paragraph.location < text.length()) {
        const auto style =
            text.attributesAtIndex(paragraph.location)->objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
        if (style) direction = style->values().baseWritingDirection;
    }
    uint8_t baseLevel = 0;
    bidiLevels(std::u16string_view(text.characters()).substr(paragraph.location, paragraph.length), direction,
               baseLevel);
    return (baseLevel & 1) != 0;
}

CaretLine lineOf(const NSLayoutManager& manager, const NSAttributedString& text, Range glyphs, NSRect fragment) {
    CaretLine line;
    line.rect = fragment;
    line.characters = manager.characterRangeForGlyphRange(glyphs);
    const std::u16string_view characters =
        std::u16string_view(text.characters()).substr(line.characters.location, line.characters.length);
    auto length = static_cast<uint32_t>(characters.size());
    if (length > 0 && isLineEnd(characters[length - 1])) --length;
    if (length > 0 && length + 1 == characters.size() && characters[length - 1] == u'\r' && characters[length] == u'\n')
        --length;
    line.textEnd = line.characters.location + length;
    line.isWrapped = length == characters.size() && line.textEnd < text.length();
    line.isRightToLeft = paragraphIsRightToLeft(text, line.characters.location);
    const std::vector<uint8_t> starts = TextBreaker().clustersInText(characters);
    for (uint32_t glyph = glyphs.location; glyph < glyphs.end();) {
        Range clusterGlyphs;
        const GlyphCluster cluster = clusterOf(manager, glyph, clusterGlyphs, fragment.origin.x);
        addCells(cluster, starts, line.characters.location, line.textEnd, line.cells);
        glyph = static_cast<uint32_t>(std::max<uint64_t>(clusterGlyphs.end(), glyph + 1));
    }
    if (line.cells.empty()) {
        // A line with nothing to pass has its caret where its line end stands.
        const GlyphCluster end = clusterOf(manager, glyphs.location, glyphs, fragment.origin.x);
        line.rect.origin.x = end.left;
        line.rect.size.width = 0;
    }
    return line;
}

CaretPlace edgeOf(const CaretCell& cell, bool atRight) {
    if (atRight == cell.isRightToLeft) return {cell.characters.location, false};
    return {static_cast<uint32_t>(cell.characters.end()), true};
}

}  // namespace

const CaretCell* CaretLine::cellAt(CaretPlace place) const {
    const CaretCell* before = nullptr;
    const CaretCell* at = nullptr;
    for (const CaretCell& cell : cells) {
        if (cell.characters.end() == place.index) before = &cell;
        if (cell.characters.contains(place.index)) at = &cell;
    }
    return before && (place.isBehindCharacter || !at) ? before : at;
}

float CaretLine::xOfCaret(CaretPlace place) const {
    const CaretCell* cell = cellAt(place);
    if (!cell) return rect.origin.x;
    const bool isBehind = cell->characters.end() <= place.index;
    return cell->isRightToLeft == isBehind ? cell->left : cell->right;
}

CaretPlace CaretLine::placeAtX(float x) const {
    if (cells.empty()) return {textEnd};
    const CaretCell* nearest = nullptr;
    float distance = 0;
    for (const CaretCell& cell : cells) {
        const float d = std::max({cell.left - x, x - cell.right, 0.0f});
        if (nearest && d >= distance) continue;
        nearest = &cell;
        distance = d;
    }
    return edgeOf(*nearest, x >= (nearest->left + nearest->right) / 2);
}

std::vector<const CaretCell*> CaretLine::cellsFromLeft() const {
    std::vector<const CaretCell*> sorted;
    for (const CaretCell& cell : cells) sorted.push_back(&cell);
    // Cells without room keep the order in which they are read.
    std::ranges::stable_sort(sorted, {}, [](const CaretCell* cell) { return cell->left + cell->right; });
    return sorted;
}

std::optional<CaretPlace> CaretLine::placeBeside(CaretPlace place, bool toRight) const {
    const CaretCell* cell = cellAt(place);
    if (!cell) return std::nullopt;
    const std::vector<const CaretCell*> sorted = cellsFromLeft();
    auto boundary = static_cast<size_t>(std::ranges::find(sorted, cell) - sorted.begin());
    const bool isBehind = cell->characters.end() <= place.index;
    if (isBehind != cell->isRightToLeft) ++boundary;
    if (boundary == (toRight ? sorted.size() : 0)) return std::nullopt;
    return edgeOf(*sorted[toRight ? boundary : boundary - 1], toRight);
}

CaretPlace CaretLine::outermostPlace(bool atRight) const {
    if (cells.empty()) return {textEnd};
    const std::vector<const CaretCell*> sorted = cellsFromLeft();
    return edgeOf(atRight ? *sorted.back() : *sorted.front(), atRight);
}

std::vector<CaretLine> caretLines(const NSLayoutManager& layoutManager, const NSTextContainer& container) {
    std::vector<CaretLine> lines;
    const Ref<NSTextStorage> text = layoutManager.textStorage();
    if (!text || text->length() == 0) return lines;
    const Range glyphs = layoutManager.glyphRangeForTextContainer(container);
    for (uint64_t glyph = glyphs.location; glyph < glyphs.end();) {
        Range lineGlyphs;
        const NSRect fragment =
            layoutManager.lineFragmentRectForGlyphAtIndex(static_cast<uint32_t>(glyph), &lineGlyphs);
        if (lineGlyphs.length == 0) break;
        lines.push_back(lineOf(layoutManager, *text, lineGlyphs, fragment));
        glyph = lineGlyphs.end();
    }
    const NSRect extra = layoutManager.extraLineFragmentUsedRectForTextContainer(container);
    if (extra.size.height > 0) {
        const float padding = std::min(container.lineFragmentPadding(), extra.size.width / 2);
        CaretLine line;
        line.characters = {text->length(), 0};
        line.textEnd = text->length();
        line.rect = {{extra.origin.x + padding, extra.origin.y}, {0, extra.size.height}};
        line.isRightToLeft = lines.empty() ? false : lines.back().isRightToLeft;
        lines.push_back(line);
    }
    return lines;
}

size_t lineOfCaret(const std::vector<CaretLine>& lines, CaretPlace place) {
    size_t found = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].characters.location > place.index) break;
        found = i;
        if (place.isBehindCharacter && lines[i].isWrapped && lines[i].textEnd == place.index) break;
    }
    return found;
}

size_t lineAtY(const std::vector<CaretLine>& lines, float y) {
    size_t found = 0;
    for (size_t i = 1; i < lines.size(); ++i) {
        if (y >= lines[i].rect.origin.y) found = i;
    }
    return found;
}

std::vector<NSRect> selectionRects(const std::vector<CaretLine>& lines, Range selection) {
    std::vector<NSRect> rects;
    for (const CaretLine& line : lines) {
        std::vector<std::pair<float, float>> spans;
        for (const CaretCell& cell : line.cells) {
            if (intersection(cell.characters, selection).length > 0 && cell.right > cell.left)
                spans.emplace_back(cell.left, cell.right);
        }
        const Range lineEnd = {line.textEnd, static_cast<uint32_t>(line.characters.end() - line.textEnd)};
        if (intersection(lineEnd, selection).length > 0) {
            const float x = line.xOfCaret({line.textEnd});
            const float width = line.rect.size.height * kSelectedLineEnd;
            spans.emplace_back(line.isRightToLeft ? x - width : x, line.isRightToLeft ? x : x + width);
        }
        std::ranges::sort(spans);
        const size_t first = rects.size();
        for (const auto& [left, right] : spans) {
            if (rects.size() > first && left <= rects.back().maxX() + kGapTolerance)
                rects.back().size.width = std::max(rects.back().maxX(), right) - rects.back().origin.x;
            else
                rects.push_back({{left, line.rect.origin.y}, {right - left, line.rect.size.height}});
        }
    }
    return rects;
}

}  // namespace qz
