#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

class NSLayoutManager;
class NSTextView;

/// The direction in which the parts of a line follow each other. Layout passes `right`.
enum class NSLineSweepDirection { left, right, down, up };
/// The direction in which a line may move to find room. Layout passes `down`.
enum class NSLineMovementDirection { doesntMove, left, right, down, up };

/// The region where a layout manager lays text out; grants or clamps each line fragment. Container coordinates are
/// points with the origin at the top left and y growing downward.
class NSTextContainer : public NSObject {
public:
    /// A width or height of 0 or less means unbounded.
    static Ref<NSTextContainer> initWithContainerSize(NSSize size);
    ~NSTextContainer() override;

    /// As set; a width or height of 0 or less means unbounded.
    NSSize containerSize() const { return containerSize_; }
    /// An actual change notifies the layout manager.
    virtual void setContainerSize(NSSize size);

    /// The owner of this container, which it does not own; null before there is one and after it has been destroyed.
    Ref<NSLayoutManager> layoutManager() const;
    /// Moves the container to another layout manager, which then owns it.
    void replaceLayoutManager(const Ref<NSLayoutManager>& layoutManager);

    /// The view that shows the container. Not owned; null once it has been destroyed.
    ///@{
    Ref<NSTextView> textView() const;
    virtual void setTextView(const Ref<NSTextView>& textView);
    ///@}

    /// Whether the width (height) should follow the view's; false by default. For derived classes; ignored here.
    ///@{
    bool widthTracksTextView() const { return widthTracksTextView_; }
    void setWidthTracksTextView(bool tracks) { widthTracksTextView_ = tracks; }
    bool heightTracksTextView() const { return heightTracksTextView_; }
    void setHeightTracksTextView(bool tracks) { heightTracksTextView_ = tracks; }
    ///@}

    /// Free space at each end of a line fragment, in points; part of the used rectangle. 5 by default; setting a value
    /// that is not finite is ignored.
    ///@{
    float lineFragmentPadding() const { return lineFragmentPadding_; }
    void setLineFragmentPadding(float padding);
    ///@}

    /// Returns the place for a line proposed at `proposedRect`. An empty result ends the container: no further text is
    /// laid out in it. `remainingRect` receives the place where the line may continue beside the result; here always
    /// the zero rectangle. This implementation cuts the proposal to the container and refuses one that starts below it
    /// or does not fit its height.
    virtual NSRect lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection sweepDirection,
                                                   NSLineMovementDirection movementDirection, NSRect* remainingRect);
    /// Whether the point lies in the region, including the top and left edges but not the bottom and right ones.
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
