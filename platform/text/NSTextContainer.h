#pragma once

#include "platform/foundation/NSGeometry.h"

namespace qz {

class NSLayoutManager;
class NSTextView;

enum class NSLineSweepDirection { left, right, down, up };
enum class NSLineMovementDirection { doesntMove, left, right, down, up };

/// The region in which a layout manager lays text out; grants or clamps each line's fragment. Container coordinates:
/// points, origin at the top left, y growing downward.
class NSTextContainer : public NSObject {
public:
    /// A width or height of 0 or less stands for no bound.
    static Ref<NSTextContainer> initWithContainerSize(NSSize size);
    ~NSTextContainer() override;

    NSSize containerSize() const { return containerSize_; }
    /// Also tells the layout manager when the size really changes.
    virtual void setContainerSize(NSSize size);

    Ref<NSLayoutManager> layoutManager() const;
    /// Moves the container to another layout manager, which then owns it.
    void replaceLayoutManager(const Ref<NSLayoutManager>& layoutManager);

    /// Not owned; empty when the view has died.
    Ref<NSTextView> textView() const;
    virtual void setTextView(const Ref<NSTextView>& textView);

    bool widthTracksTextView() const { return widthTracksTextView_; }
    void setWidthTracksTextView(bool tracks) { widthTracksTextView_ = tracks; }
    bool heightTracksTextView() const { return heightTracksTextView_; }
    void setHeightTracksTextView(bool tracks) { heightTracksTextView_ = tracks; }

    /// Points kept free at either end of a line fragment; part of the used rectangle. 5 at the start.
    float lineFragmentPadding() const { return lineFragmentPadding_; }
    void setLineFragmentPadding(float padding);

    /// Where a line that would like to be at `proposedRect` may be. An empty answer ends the container: no further text
    /// is laid out in it. `remainingRect` receives where the line may go on beside the answer; here always the zero
    /// rectangle. This one cuts the proposal to the container and refuses one that starts below it or does not fit its
    /// height.
    virtual NSRect lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection sweepDirection,
                                                   NSLineMovementDirection movementDirection, NSRect* remainingRect);
    virtual bool containsPoint(NSPoint point) const;

    std::string className() const override { return "NSTextContainer"; }

protected:
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
