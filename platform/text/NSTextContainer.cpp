#include "QzAnno/platform/text/NSTextContainer.h"

#include <cmath>
#include <limits>

#include "QzAnno/platform/text/NSLayoutManager.h"
#include "platform/text/LinePlacement.h"

namespace qz {
namespace {

// Points by which a line may exceed a container that is exactly as high as its text.
constexpr float kHeightTolerance = 0.01f;

// Wide enough for any line, but narrow enough that positions are exact to a point.
float boundedWidth(float width) {
    return width > 0 ? width : kUnboundedLength;
}

float boundedHeight(float height) {
    return height > 0 ? height : std::numeric_limits<float>::max();
}

}  // namespace

NSTextContainer::NSTextContainer(NSSize size) : containerSize_(size) {}
NSTextContainer::~NSTextContainer() = default;

Ref<NSTextContainer> NSTextContainer::initWithContainerSize(NSSize size) {
    return Ref<NSTextContainer>(new NSTextContainer(size));
}

void NSTextContainer::setContainerSize(NSSize size) {
    if (NSEqualSizes(size, containerSize_)) return;
    containerSize_ = size;
    if (const Ref<NSLayoutManager> manager = layoutManager()) manager->textContainerChangedGeometry(*this);
}

Ref<NSLayoutManager> NSTextContainer::layoutManager() const {
    return layoutManager_.lock();
}

void NSTextContainer::replaceLayoutManager(const Ref<NSLayoutManager>& layoutManager) {
    const Ref<NSLayoutManager> former = this->layoutManager();
    if (former == layoutManager) return;
    const auto self = refTo(*this);
    if (former) former->removeTextContainer(*this);
    if (layoutManager) layoutManager->addTextContainer(self);
}

Ref<NSTextView> NSTextContainer::textView() const {
    return textView_.lock();
}

void NSTextContainer::setTextView(const Ref<NSTextView>& textView) {
    textView_ = textView;
}

void NSTextContainer::setLineFragmentPadding(float padding) {
    if (!std::isfinite(padding) || padding == lineFragmentPadding_) return;
    lineFragmentPadding_ = padding;
    if (const Ref<NSLayoutManager> manager = layoutManager()) manager->textContainerChangedGeometry(*this);
}

NSRect NSTextContainer::lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection,
                                                        NSLineMovementDirection, NSRect* remainingRect) {
    if (remainingRect) *remainingRect = {};
    const NSSize bounds = {boundedWidth(containerSize_.width), boundedHeight(containerSize_.height)};
    if (proposedRect.maxY() > bounds.height + kHeightTolerance) return {};
    // Cut only if necessary, since the sum and difference involved round.
    const bool isInside = proposedRect.origin.x >= 0 && proposedRect.origin.y >= 0 &&
                          proposedRect.maxX() <= bounds.width && proposedRect.maxY() <= bounds.height;
    return isInside ? proposedRect : NSIntersectionRect(proposedRect, {{0, 0}, bounds});
}

bool NSTextContainer::containsPoint(NSPoint point) const {
    const NSSize bounds = {boundedWidth(containerSize_.width), boundedHeight(containerSize_.height)};
    return NSMouseInRect(point, {{0, 0}, bounds}, true);
}

}  // namespace qz
