#include "QzAnno/platform/text/NSTextView.h"

#include <algorithm>
#include <utility>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/text/FontFixing.h"
#include "platform/text/ParagraphRange.h"
#include "platform/text/TextBreaker.h"

namespace qz {
namespace {

const Ref<NSString>& oldRangeKey() {
    static const Ref<NSString> key = "NSOldSelectedCharacterRange"_ns;
    return key;
}

/// The grapheme cluster that contains the unit at `index`.
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
    if (undo_) undo_->removeAllActionsWithTarget(*this);
    // A container that outlives its view must stop listening to it.
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
    if (selectedRange_ == oldRange) return;
    lastRecord_.reset();
    postSelectionChange(oldRange);
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
    if (markedRange_.length > 0) {
        range = markedRange_;
        dropMarkedText();
        range.length = 0;
    }
    const UndoRecord edit = {
        {range.location, text.length()}, textStorage_->attributedSubstringFromRange(range), selectedRange()};
    // Moving the selection would end the record that this edit may continue.
    const std::weak_ptr<UndoRecord> lastRecord = lastRecord_;
    if (!replaceUnrecorded(range, text)) return false;
    lastRecord_ = lastRecord;
    record(edit);
    didChangeText();
    return true;
}

bool NSTextView::replaceUnrecorded(Range range, const NSAttributedString& text) {
    const Ref<NSDictionary> typingAttributes = typingAttributes_;
    if (!textStorage_->replaceCharactersInRange(range, text)) return false;
    setSelectedRange({range.location + text.length(), 0});
    // Keep the typing attributes of the typed text, and also if no text is left to supply them.
    if (text.length() > 0 || textStorage_->length() == 0) typingAttributes_ = typingAttributes;
    return true;
}

// Undo

void NSTextView::setUndoManager(const Ref<NSUndoManager>& undoManager) {
    forgetUndo();
    undo_ = undoManager;
}

void NSTextView::forgetUndo() {
    if (undo_) undo_->removeAllActionsWithTarget(*this);
    lastRecord_.reset();
}

void NSTextView::record(UndoRecord edit) {
    if (!undo_ || (edit.range.length == 0 && edit.former->length() == 0)) return;
    if (!undo_->isUndoing() && !undo_->isRedoing() && continuesLastRecord(edit)) return;
    const char* name = edit.range.length > 0 ? "Typing" : "Delete";
    const auto kept = std::make_shared<UndoRecord>(std::move(edit));
    undo_->prepareWithInvocationTarget(*this).invoke([this, kept, place = undoPlace_] {
        if (place) place();
        playBack(*kept);
    });
    if (undo_->isUndoing() || undo_->isRedoing()) return;
    undo_->setActionName(name);
    lastRecord_ = kept;
}

/// Extends the last record if the edit continues it: typing after typed text, deleting beside deleted text.
bool NSTextView::continuesLastRecord(const UndoRecord& edit) {
    const std::shared_ptr<UndoRecord> last = lastRecord_.lock();
    if (!last) return false;
    if (edit.range.length > 0) {
        if (edit.former->length() > 0 || last->range.length == 0 || edit.range.location != last->range.end())
            return false;
        last->range.length += edit.range.length;
        return true;
    }
    const bool isBefore = edit.range.location + edit.former->length() == last->range.location;
    if (last->range.length > 0 || (!isBefore && edit.range.location != last->range.location)) return false;
    const auto former = NSMutableAttributedString::initWithAttributedString(isBefore ? *edit.former : *last->former);
    former->appendAttributedString(isBefore ? *last->former : *edit.former);
    last->former = former->copy();
    last->range.location = edit.range.location;
    return true;
}

void NSTextView::playBack(const UndoRecord& edit) {
    if (edit.range.end() > textStorage_->length()) return;
    if (markedRange_.length > 0) dropMarkedText();
    const UndoRecord inverse = {{edit.range.location, edit.former->length()},
                                textStorage_->attributedSubstringFromRange(edit.range),
                                selectedRange()};
    if (!replaceUnrecorded(edit.range, *edit.former)) return;
    record(inverse);
    setSelectedRange(edit.selection);
    didChangeText();
}

// Marked text

bool NSTextView::setMarkedText(const Ref<NSString>& text, Range selectedInside) {
    if (!editable_) return false;
    if (markedRange_.length == 0) {
        if (text->length() == 0) return true;
        const Range selection = selectedRange();
        if (selection.length > 0) replaceCharacters(selection, *NSAttributedString::init());
        markedRange_ = {selection.location, 0};
    }
    const uint32_t start = markedRange_.location;
    replaceUnrecorded(markedRange_, *NSAttributedString::initWithString(text, typingAttributes_));
    markedRange_ = {start, text->length()};
    const Range inside = intersection(selectedInside, {0, text->length()});
    setSelectedRange({start + std::min(selectedInside.location, text->length()), inside.length});
    didChangeText();
    return true;
}

void NSTextView::dropMarkedText() {
    const Range marked = std::exchange(markedRange_, Range());
    if (marked.end() <= textStorage_->length()) replaceUnrecorded(marked, *NSAttributedString::init());
}

void NSTextView::unmarkText() {
    if (markedRange_.length == 0) return;
    const Ref<NSAttributedString> text = textStorage_->attributedSubstringFromRange(markedRange_);
    const Range marked = markedRange_;
    dropMarkedText();
    if (text) replaceCharacters({marked.location, 0}, *text);
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
