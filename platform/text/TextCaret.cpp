#include "platform/text/TextCaret.h"

#include <algorithm>

#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "platform/text/FontFixing.h"
#include "platform/text/ParagraphRange.h"
#include "platform/text/WordBreaks.h"

namespace qz {

std::vector<CaretLine> TextCaret::lines() const {
    const Ref<NSTextContainer> container = view_->textContainer();
    const Ref<NSLayoutManager> manager = container ? container->layoutManager() : nullptr;
    return manager ? caretLines(*manager, *container) : std::vector<CaretLine>();
}

void TextCaret::followSelection() {
    const Range selection = view_->selectedRange();
    const auto end = static_cast<uint32_t>(selection.end());
    if (std::min(anchor_, place_.index) == selection.location && std::max(anchor_, place_.index) == end) return;
    anchor_ = selection.location;
    // The insertion point is after the text just typed.
    place_ = {end, selection.length == 0};
    aimX_.reset();
}

uint32_t TextCaret::position() {
    followSelection();
    return place_.index;
}

void TextCaret::goTo(CaretPlace place, bool extend) {
    place_ = {std::min(place.index, view_->textStorage()->length()), place.isBehindCharacter};
    if (!extend) anchor_ = place_.index;
    aimX_.reset();
    const uint32_t start = std::min(anchor_, place_.index);
    view_->setSelectedRange({start, std::max(anchor_, place_.index) - start});
}

void TextCaret::move(Motion motion, bool extend) {
    followSelection();
    const std::vector<CaretLine> lines = this->lines();
    if (lines.empty()) return;
    const std::u16string& text = view_->textStorage()->characters();
    const CaretLine& line = lines[lineOfCaret(lines, place_)];
    switch (motion) {
        case Motion::left:
        case Motion::right:
            moveSideways(lines, motion == Motion::right, extend);
            break;
        case Motion::wordLeft:
        case Motion::wordRight:
            if ((motion == Motion::wordRight) != line.isRightToLeft)
                goTo({nextWordEnd(text, place_.index), true}, extend);
            else
                goTo({previousWordStart(text, place_.index)}, extend);
            break;
        case Motion::up:
        case Motion::down:
            moveAcrossLines(lines, motion == Motion::down, extend);
            break;
        case Motion::lineStart:
            goTo({line.characters.location}, extend);
            break;
        case Motion::lineEnd:
            goTo({line.textEnd, true}, extend);
            break;
        case Motion::textStart:
            goTo({0}, extend);
            break;
        case Motion::textEnd:
            goTo({static_cast<uint32_t>(text.size()), true}, extend);
            break;
    }
}

void TextCaret::moveSideways(const std::vector<CaretLine>& lines, bool toRight, bool extend) {
    const size_t at = lineOfCaret(lines, place_);
    const CaretLine& line = lines[at];
    if (!extend && anchor_ != place_.index) {
        const size_t anchorLine = lineOfCaret(lines, {anchor_});
        // On one line the edge is determined visually, across lines by reading order.
        const bool anchorIsRight = anchorLine == at ? line.xOfCaret({anchor_}) > line.xOfCaret(place_)
                                                    : (anchorLine > at) != line.isRightToLeft;
        goTo(anchorIsRight == toRight ? CaretPlace{anchor_} : place_, false);
        return;
    }
    if (std::optional<CaretPlace> beside = line.placeBeside(place_, toRight)) {
        // After the last cluster of a wrapped line comes the start of the next line, not the same place again.
        if (line.isWrapped && beside->index == line.textEnd) beside->isBehindCharacter = false;
        goTo(*beside, extend);
        return;
    }
    const bool goesOn = toRight != line.isRightToLeft;
    if (goesOn ? at + 1 >= lines.size() : at == 0) return;
    const CaretLine& next = lines[goesOn ? at + 1 : at - 1];
    const bool entersAtRight = goesOn == next.isRightToLeft;
    CaretPlace place = next.outermostPlace(entersAtRight);
    if (place.index == place_.index) place = next.placeBeside(place, !entersAtRight).value_or(place);
    goTo(place, extend);
}

void TextCaret::moveAcrossLines(const std::vector<CaretLine>& lines, bool down, bool extend) {
    const size_t at = lineOfCaret(lines, place_);
    const float x = aimX_.value_or(lines[at].xOfCaret(place_));
    if (down ? at + 1 >= lines.size() : at == 0) {
        goTo(down ? CaretPlace{lines[at].textEnd, true} : CaretPlace{lines[at].characters.location}, extend);
        return;
    }
    goTo(lines[down ? at + 1 : at - 1].placeAtX(x), extend);
    aimX_ = x;
}

uint32_t TextCaret::indexAtPoint(NSPoint point) const {
    const std::vector<CaretLine> lines = this->lines();
    return lines.empty() ? 0 : lines[lineAtY(lines, point.y)].placeAtX(point.x).index;
}

void TextCaret::moveToPoint(NSPoint point, bool extend) {
    followSelection();
    const std::vector<CaretLine> lines = this->lines();
    goTo(lines.empty() ? CaretPlace() : lines[lineAtY(lines, point.y)].placeAtX(point.x), extend);
}

void TextCaret::selectWordAtPoint(NSPoint point) {
    const std::u16string& text = view_->textStorage()->characters();
    const std::vector<CaretLine> lines = this->lines();
    if (lines.empty()) return;
    const CaretLine& line = lines[lineAtY(lines, point.y)];
    uint32_t index = line.placeAtX(point.x).index;
    // The place nearest to the pointer may be the far edge of the cluster under it.
    for (const CaretCell& cell : line.cells) {
        if (point.x >= cell.left && point.x < cell.right) index = cell.characters.location;
    }
    const Range word = wordAt(text, index);
    goTo({word.location}, false);
    goTo({static_cast<uint32_t>(word.end()), true}, true);
}

void TextCaret::selectParagraphAtPoint(NSPoint point) {
    const Range paragraph = paragraphRange(view_->textStorage()->characters(), {indexAtPoint(point), 0});
    goTo({paragraph.location}, false);
    goTo({static_cast<uint32_t>(paragraph.end()), true}, true);
}

void TextCaret::selectAll() {
    goTo({0}, false);
    goTo({view_->textStorage()->length(), true}, true);
}

bool TextCaret::deleteWord(bool backward) {
    followSelection();
    if (anchor_ == place_.index && view_->isEditable()) {
        const std::u16string& text = view_->textStorage()->characters();
        goTo({backward ? previousWordStart(text, place_.index) : nextWordEnd(text, place_.index)}, true);
    }
    return view_->selectedRange().length > 0 && (backward ? view_->deleteBackward() : view_->deleteForward());
}

NSRect TextCaret::rect() {
    followSelection();
    const std::vector<CaretLine> lines = this->lines();
    if (lines.empty()) return rectInEmptyText();
    const CaretLine& line = lines[lineOfCaret(lines, place_)];
    return {{line.xOfCaret(place_), line.rect.origin.y}, {0, line.rect.size.height}};
}

NSRect TextCaret::rectInEmptyText() const {
    const Ref<NSDictionary> attributes = view_->typingAttributes();
    Ref<NSFont> font = attributes->objectForKey<NSFont>(*NSFontAttributeName);
    if (!font) font = defaultFont();
    const Ref<NSTextContainer> container = view_->textContainer();
    const float padding = container->lineFragmentPadding();
    const float width = container->containerSize().width;
    const auto style = attributes->objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
    float x = padding;
    if (style && width > 0 && style->alignment() == NSTextAlignment::center) x = width / 2;
    if (style && width > 0 && style->alignment() == NSTextAlignment::right) x = width - padding;
    return {{x, 0}, {0, font->ascender() - font->descender()}};
}

std::vector<NSRect> TextCaret::selectionRects() const {
    return qz::selectionRects(lines(), view_->selectedRange());
}

}  // namespace qz
