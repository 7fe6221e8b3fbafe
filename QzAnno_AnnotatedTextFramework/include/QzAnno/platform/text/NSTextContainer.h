#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

class NSLayoutManager;
class NSTextView;

/// In which direction the parts of a line follow one another. Layout asks with `right`.
enum class NSLineSweepDirection { left, right, down, up };
/// In which direction a line may move to find room. Layout asks with `down`.
enum class NSLineMovementDirection { doesntMove, left, right, down, up };

/// The region in which a layout manager lays text out; grants or clamps each line's fragment. Container coordinates:
/// points, origin at the top left, y growing downward.
class NSTextContainer : public NSObject {
public:
    /// A width or height of 0 or less stands for no bound.
    static Ref<NSTextContainer> initWithContainerSize(NSSize size);
    ~NSTextContainer() override;

    /// As it was set: a width or height of 0 or less stands for no bound.
    NSSize containerSize() const { return containerSize_; }
    /// Also tells the layout manager when the size really changes.
    virtual void setContainerSize(NSSize size);

    /// Not owned, but the owner; none before there is one, and after it has died.
    Ref<NSLayoutManager> layoutManager() const;
    /// Moves the container to another layout manager, which then owns it.
    void replaceLayoutManager(const Ref<NSLayoutManager>& layoutManager);

    /// The view that shows the container. Not owned; none when it has died.
    ///@{
    Ref<NSTextView> textView() const;
    virtual void setTextView(const Ref<NSTextView>& textView);
    ///@}

    /// Whether the width (height) is to follow the view's; not at the start. For derived classes: nothing here heeds
    /// it.
    ///@{
    bool widthTracksTextView() const { return widthTracksTextView_; }
    void setWidthTracksTextView(bool tracks) { widthTracksTextView_ = tracks; }
    bool heightTracksTextView() const { return heightTracksTextView_; }
    void setHeightTracksTextView(bool tracks) { heightTracksTextView_ = tracks; }
    ///@}

    /// Points kept free at either end of a line fragment; part of the used rectangle. 5 at the start; what is not
    /// finite is ignored.
    ///@{
    float lineFragmentPadding() const { return lineFragmentPadding_; }
    void setLineFragmentPadding(float padding);
    ///@}

    /// Where a line that would like to be at `proposedRect` may be. An empty answer ends the container: no further text
    /// is laid out in it. `remainingRect` receives where the line may go on beside the answer; here always the zero
    /// rectangle. This one cuts the proposal to the container and refuses one that starts below it or does not fit its
    /// height.
    virtual NSRect lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection sweepDirection,
                                                   NSLineMovementDirection movementDirection, NSRect* remainingRect);
    /// Whether the point lies in the region: the top and left edges do, the bottom and right ones do not.
    virtual bool containsPoint(NSPoint point) const;

    std::string className() const override { return "NSTextContainer"; }

protected:
    /// As `initWithContainerSize`.
    explicit NSTextContainer(NSSize size);

private:
    friend class NSLayoutManager;

    NSSize containerSize_;
    WeakRef<NSLayoutManager> layoutManager_;
    WeakRef<NSTextView> textView_;
    bool widthTracksTextView_ = false;
    bool heightTracksTextView_ = false;
    float lineFragmentPadding_ = 5.0f;
};

}  // namespace qz
