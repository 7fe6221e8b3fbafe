#pragma once

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/text/NSTextContainer.h"

namespace qz {

struct FrameStyle;

/// A text container for a screen that keeps text inside a text box. Screen coordinates are points with the origin at
/// the top left and y growing downward.
///
/// The box comes from the frame attributes of the text (margins, bounding box, vertical alignment) and is then shrunk
/// to what the text uses, so it always gives the text's place on the screen. In full-screen mode the container is as
/// large as the screen and glyphs are placed in screen coordinates; in box mode it is as large as the box and glyphs
/// are placed relative to the box's corner.
class QzScreenTextContainer final : public NSTextContainer {
public:
    /// Starts in full-screen mode with a box that covers the screen, which is 640 x 480 unless a size is given.
    ///@{
    static Ref<QzScreenTextContainer> init();
    static Ref<QzScreenTextContainer> initWithScreenSize(NSSize size);
    ///@}
    ~QzScreenTextContainer() override;

    /// Whether the container is in full-screen mode. An actual change notifies the layout manager.
    ///@{
    bool fullscreen() const { return fullscreenMode_; }
    void setFullscreen(bool fullscreen);
    ///@}
    /// Setting the size does not recompute the box; `updateFromString` does.
    ///@{
    NSSize screenSize() const { return screensize_; }
    void setScreenSize(NSSize size);
    ///@}
    /// In screen points in both modes. Setting a width or height of 0 sets 1.
    ///@{
    NSRect textBox() const { return textBox_; }
    void setTextBox(NSRect box);
    ///@}

    /// Called by a tracked text view when its frame changes. Sets the screen size in full-screen mode and does nothing
    /// in box mode. Without a text view it logs a line and changes nothing.
    void setContainerSize(NSSize size) override;
    /// Calls `updateFromString` after the view's edits.
    void setTextView(const Ref<NSTextView>& textView) override;
    /// Called after changes of the text view's text.
    void textViewUpdate(const NSNotification& notification);

    /// Recomputes the box from the frame attributes of the first character, lays the text out in it and shrinks it to
    /// the used rectangle, rounded outward and placed by the vertical alignment. Logs a line and does nothing if there
    /// is neither a text view nor a text storage.
    void updateFromString();

    /// Converts a rectangle from screen points to container points.
    NSRect rescaleFromScreenToContainer(NSRect rect) const;
    /// Clamps the line into the text box.
    NSRect lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection sweepDirection,
                                           NSLineMovementDirection movementDirection, NSRect* remainingRect) override;
    /// Whether the point lies in the text box, including the bottom edge but not the top edge.
    bool containsPoint(NSPoint point) const override;

    std::string className() const override { return "QzScreenTextContainer"; }

private:
    QzScreenTextContainer();

    /// The attributes of the first character, or the text view's typing attributes; null if there is neither.
    Ref<NSDictionary> frameAttributes() const;
    NSRect boxOf(const FrameStyle& style) const;
    /// The used rectangle in screen coordinates, rounded outward and moved down in the box by the vertical alignment.
    NSRect placedUsedRect(const FrameStyle& style) const;
    void announceChangedGeometry();

    NSRect textBox_;
    NSSize screensize_;
    bool fullscreenMode_ = true;
    bool updating_ = false;
};

}  // namespace qz
