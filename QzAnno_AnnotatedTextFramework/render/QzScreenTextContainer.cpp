#include "QzAnno/render/QzScreenTextContainer.h"

#include <algorithm>
#include <cmath>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"

namespace qz {
namespace {

constexpr NSSize kStartSize = {640, 480};

float bounded(double length) {
    return static_cast<float>(std::clamp<double>(length, -Limits::kLengthMax, Limits::kLengthMax));
}

}  // namespace

QzScreenTextContainer::QzScreenTextContainer() : NSTextContainer(kStartSize) {
    setScreenSize(kStartSize);
    setTextBox({{0, 0}, kStartSize});
    setHeightTracksTextView(true);
    setWidthTracksTextView(true);
}

Ref<QzScreenTextContainer> QzScreenTextContainer::init() {
    return Ref<QzScreenTextContainer>(new QzScreenTextContainer);
}

Ref<QzScreenTextContainer> QzScreenTextContainer::initWithScreenSize(NSSize size) {
    Ref<QzScreenTextContainer> container = init();
    container->setScreenSize(size);
    container->setTextBox({{0, 0}, size});
    return container;
}

QzScreenTextContainer::~QzScreenTextContainer() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
}

void QzScreenTextContainer::setTextBox(NSRect box) {
    if (box.size.width == 0) box.size.width = 1;
    if (box.size.height == 0) box.size.height = 1;
    if (NSEqualRects(box, textBox_)) return;
    textBox_ = box;
    if (!fullscreenMode_) NSTextContainer::setContainerSize(box.size);
}

void QzScreenTextContainer::setScreenSize(NSSize size) {
    screensize_ = size;
    if (fullscreenMode_) NSTextContainer::setContainerSize(size);
}

void QzScreenTextContainer::setFullscreen(bool fullscreen) {
    if (fullscreen == fullscreenMode_) return;
    fullscreenMode_ = fullscreen;
    if (!updating_) announceChangedGeometry();
    NSTextContainer::setContainerSize(fullscreen ? screensize_ : textBox_.size);
}

void QzScreenTextContainer::setContainerSize(NSSize size) {
    if (!textView()) {
        NSLog("No text view on set container size\n");
        return;
    }
    if (fullscreenMode_) setScreenSize(size);
}

void QzScreenTextContainer::setTextView(const Ref<NSTextView>& textView) {
    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    notifications.removeObserver(this, NSTextDidChangeNotification);
    NSTextContainer::setTextView(textView);
    if (!textView) return;
    notifications.addObserver(
        this, [this](const NSNotification& notification) { textViewUpdate(notification); }, NSTextDidChangeNotification,
        textView.get());
}

void QzScreenTextContainer::textViewUpdate(const NSNotification& /*notification*/) {
    updateFromString();
}

NSRect QzScreenTextContainer::rescaleFromScreenToContainer(NSRect rect) const {
    const float scaleX = containerSize().width / screensize_.width;
    const float scaleY = containerSize().height / screensize_.height;
    return {{rect.origin.x * scaleX, rect.origin.y * scaleY}, {rect.size.width * scaleX, rect.size.height * scaleY}};
}

NSRect QzScreenTextContainer::lineFragmentRectForProposedRect(NSRect proposedRect,
                                                              NSLineSweepDirection /*sweepDirection*/,
                                                              NSLineMovementDirection /*movementDirection*/,
                                                              NSRect* remainingRect) {
    // A line never continues in a second fragment beside the first.
    if (remainingRect) *remainingRect = {};
    const NSPoint offset = fullscreenMode_ ? textBox_.origin : NSPoint{};
    const NSRect moved = NSOffsetRect(proposedRect, -offset.x, -offset.y);
    const NSRect clamped = {
        {std::max(moved.origin.x, 0.0f), std::max(moved.origin.y, 0.0f)},
        {std::min(moved.size.width, textBox_.size.width), std::min(moved.size.height, textBox_.size.height)}};
    return NSOffsetRect(NSIntersectionRect(clamped, {{0, 0}, textBox_.size}), offset.x, offset.y);
}

bool QzScreenTextContainer::containsPoint(NSPoint point) const {
    return NSMouseInRect(point, textBox_, false);
}

Ref<NSDictionary> QzScreenTextContainer::frameAttributes() const {
    if (const Ref<NSTextView> view = textView()) {
        const Ref<NSAttributedString> first = view->attributedSubstringFromRange({0, 1});
        return first ? first->attributesAtIndex(0) : view->typingAttributes();
    }
    const Ref<NSLayoutManager> manager = layoutManager();
    const Ref<NSTextStorage> storage = manager ? manager->textStorage() : Ref<NSTextStorage>();
    if (!storage) return {};
    return storage->length() > 0 ? storage->attributesAtIndex(0) : NSDictionary::dictionary();
}

NSRect QzScreenTextContainer::boxOf(const FrameStyle& style) const {
    if (style.margins) {
        const auto [left, right, top, bottom] = *style.margins;
        return {{bounded(left), bounded(top)},
                {bounded(screensize_.width - (left + right)), bounded(screensize_.height - (top + bottom))}};
    }
    if (const auto& box = style.area) {
        return {{bounded(box->origin.x * screensize_.width), bounded(box->origin.y * screensize_.height)},
                {bounded(box->size.width * screensize_.width), bounded(box->size.height * screensize_.height)}};
    }
    return {{0, 0}, screensize_};
}

NSRect QzScreenTextContainer::placedUsedRect(const FrameStyle& style) const {
    const Ref<NSLayoutManager> manager = layoutManager();
    if (!manager) return {textBox_.origin, {}};
    manager->glyphRangeForTextContainer(*this);
    NSRect used = manager->usedRectForTextContainer(*this);
    // An empty text begins where its first line will be.
    if (manager->textStorage() && manager->textStorage()->length() == 0 && fullscreenMode_)
        used.origin = textBox_.origin;
    // The lines of a full box may add up to slightly more than its height, which does not justify another point, or a
    // line that would begin in it.
    used.size.height = std::min(used.size.height, std::max(textBox_.size.height, 0.0f));
    used = {{std::floor(used.origin.x), std::floor(used.origin.y)},
            {std::ceil(used.size.width), std::ceil(used.size.height)}};
    const float free = textBox_.size.height - used.size.height;
    if (style.vertical == VerticalAlignment::middle) used.origin.y += free * 0.5f;
    if (style.vertical == VerticalAlignment::bottom) used.origin.y += free;
    return fullscreenMode_ ? used : NSOffsetRect(used, textBox_.origin.x, textBox_.origin.y);
}

void QzScreenTextContainer::announceChangedGeometry() {
    if (const Ref<NSLayoutManager> manager = layoutManager()) manager->textContainerChangedGeometry(*this);
}

void QzScreenTextContainer::updateFromString() {
    const Ref<NSDictionary> attributes = frameAttributes();
    if (!attributes) {
        NSLog("Nothing to update from!\n");
        return;
    }
    updating_ = true;
    // The sizes set below must not return through a text view that tracks this container.
    const bool heightTracked = heightTracksTextView();
    const bool widthTracked = widthTracksTextView();
    const auto trackAgain = [&] {
        setHeightTracksTextView(heightTracked);
        setWidthTracksTextView(widthTracked);
    };
    setHeightTracksTextView(false);
    setWidthTracksTextView(false);
    try {
        const FrameStyle style = frameStyleOf(*attributes);
        setTextBox(boxOf(style));
        announceChangedGeometry();
        setTextBox(placedUsedRect(style));
        trackAgain();
        announceChangedGeometry();
        if (const Ref<NSTextView> view = textView()) view->display();
    } catch (...) {
        trackAgain();
        updating_ = false;
        throw;
    }
    updating_ = false;
}

}  // namespace qz
