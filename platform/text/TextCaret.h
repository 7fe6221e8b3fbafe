#pragma once

#include <optional>

#include "QzAnno/platform/text/NSTextView.h"
#include "platform/text/CaretGeometry.h"

namespace qz {

/// Moves the insertion point and selection of a text view by keys and pointer, as the text appears on the screen: left
/// and right are visual, even with mixed directions, and never stop inside a grapheme cluster.
///
/// Follows selections set elsewhere. Points are in container coordinates. Use it on the view's thread.
class TextCaret {
public:
    enum class Motion { left, right, wordLeft, wordRight, up, down, lineStart, lineEnd, textStart, textEnd };

    explicit TextCaret(const Ref<NSTextView>& view) : view_(view) {}

    /// With `extend`, the other end of the selection stays; otherwise left and right collapse a selection to its edge.
    void move(Motion motion, bool extend);
    void moveToPoint(NSPoint point, bool extend);
    void selectWordAtPoint(NSPoint point);
    void selectParagraphAtPoint(NSPoint point);
    void selectAll();
    /// Deletes the selection, or else the word before or after the insertion point.
    bool deleteWord(bool backward);

    /// The end of the selection that moves.
    uint32_t position();
    /// The insertion point, with no width. In an empty text it is at the container's top, placed by the alignment.
    NSRect rect();
    /// The rectangles of the selection.
    std::vector<NSRect> selectionRects() const;
    /// The nearest insertion point.
    uint32_t indexAtPoint(NSPoint point) const;

private:
    std::vector<CaretLine> lines() const;
    void followSelection();
    void goTo(CaretPlace place, bool extend);
    void moveSideways(const std::vector<CaretLine>& lines, bool toRight, bool extend);
    void moveAcrossLines(const std::vector<CaretLine>& lines, bool down, bool extend);
    NSRect rectInEmptyText() const;

    const Ref<NSTextView> view_;
    // The end of the selection that stays.
    uint32_t anchor_ = 0;
    CaretPlace place_;
    // The target of moves up and down.
    std::optional<float> aimX_;
};

}  // namespace qz
