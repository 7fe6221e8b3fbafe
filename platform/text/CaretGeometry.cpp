#include "platform/text/CaretGeometry.h"

#include <algorithm>
#include <cmath>

#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/text/ParagraphRange.h"

namespace qz {
namespace {

// Cells closer than this many points are shown as one.
constexpr float kGapTolerance = 0.05f;
// The width of a selected line end, as a fraction of the line's height.
constexpr float kSelectedLineEnd = 0.25f;

bool isLineEnd(char16_t unit) {
    return endsLine(unit) || unit == u'\n' || unit == u'\r' || unit == 0x0085 || unit == 0x2029;
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
    line.isRightToLeft = manager.isRightToLeftParagraphOfGlyphAtIndex(glyphs.location);
    line.cells = manager.caretCellsForLineOfGlyphAtIndex(glyphs.location);
    // A line without clusters has its caret at its line end.
    if (length == 0 && !line.cells.empty()) {
        line.rect.origin.x = line.cells.front().left;
        line.rect.size.width = 0;
    }
    std::erase_if(line.cells, [&](const CaretCell& cell) { return cell.characters.location >= line.textEnd; });
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
    // Cells without extent keep their reading order.
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
