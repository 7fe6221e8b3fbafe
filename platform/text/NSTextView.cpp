#include "platform/text/NSTextView.h"

#include <algorithm>

#include "platform/foundation/NSLog.h"
#include "platform/text/AttributeNames.h"
#include "platform/text/FontFixing.h"
#include "platform/text/NSLayoutManager.h"
#include "platform/text/ParagraphRange.h"
#include "platform/text/TextBreaker.h"

namespace qz {
namespace {

const Ref<NSString>& oldRangeKey() {
    static const Ref<NSString> key = "NSOldSelectedCharacterRange"_ns;
    return key;
}

/// The grapheme cluster that holds the unit at `index`.
Range clusterAt(std::u16string_view text, uint32_t index) {
    const Range paragraph = paragraphRange(text, {index, 1});
    const std::vector<uint8_t> clusters =
        TextBreaker::clustersInText(text.substr(paragraph.location, paragraph.length));
    uint32_t start = index - paragraph.location;
    while (start > 0 && !clusters[start]) --start;
    uint32_t end = index - paragraph.location + 1;
    while (end < clusters.size() && !clusters[end]) ++end;
    return {paragraph.location + start, end - start};
}

}  // namespace

NSTextView::NSTextView() {
    ObjectMap attributes;
    attributes.set(NSFontAttributeName, defaultFont());
    typingAttributes_ = NSDictionary::dictionaryWithMap(std::move(attributes));
}

NSTextView::~NSTextView() {
    // A container that outlives its view has to stop listening to it.
    if (textContainer_ && !textContainer_->textView()) textContainer_->setTextView({});
}

Ref<NSTextView> NSTextView::init() {
    return initWithTextContainer(NSTextContainer::initWithContainerSize({}));
}

Ref<NSTextView> NSTextView::initWithTextContainer(const Ref<NSTextContainer>& container) {
    if (!container) return init();
    Ref<NSTextView> view(new NSTextView());
    view->adoptTextContainer(container);
    return view;
}

void NSTextView::adoptTextContainer(const Ref<NSTextContainer>& container) {
    Ref<NSLayoutManager> layoutManager = container->layoutManager();
    if (!layoutManager) {
        layoutManager = NSLayoutManager::init();
        container->replaceLayoutManager(layoutManager);
    }
    textStorage_ = layoutManager->textStorage();
    if (!textStorage_) {
        textStorage_ = NSTextStorage::init();
        layoutManager->replaceTextStorage(textStorage_);
    }
    textContainer_ = container;
    container->setTextView(refTo(*this));
}

Ref<NSString> NSTextView::string() const {
    return textStorage_->string();
}

Ref<NSAttributedString> NSTextView::attributedSubstringFromRange(Range range) const {
    return textStorage_->attributedSubstringFromRange(range);
}

Range NSTextView::selectedRange() const {
    const uint32_t start = std::min(selectedRange_.location, textStorage_->length());
    const auto end = static_cast<uint32_t>(std::min<uint64_t>(selectedRange_.end(), textStorage_->length()));
    return {start, end - start};
}

void NSTextView::setSelectedRange(Range range) {
    const Range oldRange = selectedRange_;
    selectedRange_ = range;
    selectedRange_ = selectedRange();
    if (selectedRange_.length == 0 && textStorage_->length() > 0) {
        const uint32_t location = selectedRange_.location;
        typingAttributes_ = textStorage_->attributesAtIndex(location > 0 ? location - 1 : 0);
    }
    if (selectedRange_ != oldRange) postSelectionChange(oldRange);
}

void NSTextView::postSelectionChange(Range oldRange) {
    ObjectMap info;
    info.set(oldRangeKey(),
             NSString::stringWithUTF8String(stringWithFormat("{%u, %u}", {oldRange.location, oldRange.length})));
    NSNotificationCenter::defaultCenter().postNotificationName(NSTextViewDidChangeSelectionNotification, refTo(*this),
                                                               NSDictionary::dictionaryWithMap(std::move(info)));
}

void NSTextView::setTypingAttributes(Ref<NSDictionary> attributes) {
    typingAttributes_ = attributes ? std::move(attributes) : NSDictionary::dictionary();
}

bool NSTextView::insertText(const Ref<NSString>& text) {
    return replaceCharacters(selectedRange(), *NSAttributedString::initWithString(text, typingAttributes_));
}

bool NSTextView::deleteBackward() {
    Range range = selectedRange();
    if (range.length == 0) {
        if (range.location == 0) return false;
        range = clusterAt(textStorage_->characters(), range.location - 1);
    }
    return replaceCharacters(range, *NSAttributedString::init());
}

bool NSTextView::deleteForward() {
    Range range = selectedRange();
    if (range.length == 0) {
        if (range.location == textStorage_->length()) return false;
        range = clusterAt(textStorage_->characters(), range.location);
    }
    return replaceCharacters(range, *NSAttributedString::init());
}

bool NSTextView::replaceCharacters(Range range, const NSAttributedString& text) {
    if (!shouldChangeTextInRange(range)) return false;
    const Ref<NSDictionary> typingAttributes = typingAttributes_;
    if (!textStorage_->replaceCharactersInRange(range, text)) return false;
    setSelectedRange({range.location + text.length(), 0});
    // What was typed with goes on being typed with.
    if (text.length() > 0) typingAttributes_ = typingAttributes;
    didChangeText();
    return true;
}

bool NSTextView::shouldChangeTextInRange(Range range) const {
    return editable_ && range.end() <= textStorage_->length();
}

void NSTextView::didChangeText() {
    NSNotificationCenter::defaultCenter().postNotificationName(NSTextDidChangeNotification, refTo(*this));
}

void NSTextView::display() {
    if (displayHook_) displayHook_();
}

}  // namespace qz
