#pragma once

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/text/NSTextContainer.h"

namespace qz {

struct FrameStyle;

/// A text container for a screen, in which text keeps to a text box. Screen points, origin at the top left, y growing
/// downward.
///
/// The box comes from the frame attributes of the text (margins, bounding box, vertical alignment) and is then shrunk
/// to what the text uses, so that it always tells where the text sits on the screen. In full-screen mode the container
/// is as large as the screen and glyphs are placed in screen coordinates; in box mode it is as large as the box and
/// glyphs are placed from the box's corner.
class QzScreenTextContainer final : public NSTextContainer {
public:
    /// In full-screen mode, with a box that covers the screen; of 640 x 480 unless a size is given.
    ///@{
    static Ref<QzScreenTextContainer> init();
    static Ref<QzScreenTextContainer> initWithScreenSize(NSSize size);
    ///@}
    ~QzScreenTextContainer() override;

    /// The mode; the layout manager is told when it really changes.
    ///@{
    bool fullscreen() const { return fullscreenMode_; }
    void setFullscreen(bool fullscreen);
    ///@}
    /// Setting the size does not recompute the box; `updateFromString` does.
    ///@{
    NSSize screenSize() const { return screensize_; }
    void setScreenSize(NSSize size);
    ///@}
    /// In screen points in both modes. A width or height of 0 that is set becomes 1.
    ///@{
    NSRect textBox() const { return textBox_; }
    void setTextBox(NSRect box);
    ///@}

    /// What a text view that the container tracks calls when its frame changes: a new screen size in full-screen mode,
    /// ignored in box mode, refused with a log line without a text view.
    void setContainerSize(NSSize size) override;
    /// Follows the view's edits with `updateFromString`.
    void setTextView(const Ref<NSTextView>& textView) override;
    /// What the text view's changes of text call.
    void textViewUpdate(const NSNotification& notification);

    /// Recomputes the box from the frame attributes of the first character, lays the text out in it and shrinks it to
    /// the used rectangle, rounded outward and placed by the vertical alignment. Without text view and text storage it
    /// logs and does nothing.
    void updateFromString();

    /// A rectangle in screen points, in container points.
    NSRect rescaleFromScreenToContainer(NSRect rect) const;
    /// Clamps the line into the text box.
    NSRect lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection sweepDirection,
                                           NSLineMovementDirection movementDirection, NSRect* remainingRect) override;
    /// Whether the point lies in the text box, the bottom edge included and the top edge not.
    bool containsPoint(NSPoint point) const override;

    std::string className() const override { return "QzScreenTextContainer"; }

private:
    QzScreenTextContainer();

    /// Of the first character, or what a text view would type with; none when there is nothing to ask.
    Ref<NSDictionary> frameAttributes() const;
    NSRect boxOf(const FrameStyle& style) const;
    /// The used rectangle in screen coordinates, rounded outward and moved down in the box as the alignment asks.
    NSRect placedUsedRect(const FrameStyle& style) const;
    void announceChangedGeometry();

    NSRect textBox_;
    NSSize screensize_;
    bool fullscreenMode_ = true;
    bool updating_ = false;
};

}  // namespace qz
