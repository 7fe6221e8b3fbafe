#pragma once

#include <functional>

#include "platform/foundation/NSNotificationCenter.h"
#include "platform/text/NSAttributedString.h"
#include "platform/text/NSTextContainer.h"
#include "platform/text/NSTextStorage.h"

namespace qz {

/// Posted by a text view, as object, after the user or a command has changed its text or the attributes of its text.
inline const Ref<NSString> NSTextDidChangeNotification = "NSTextDidChangeNotification"_ns;
/// Posted by a text view, as object, after its selection has changed. User info: "NSOldSelectedCharacterRange", a
/// string "{location, length}".
inline const Ref<NSString> NSTextViewDidChangeSelectionNotification = "NSTextViewDidChangeSelectionNotification"_ns;

/// The model of an editable text view: text, selection, typing attributes. A window's view draws it and feeds it.
///
/// Owns its text storage, which owns the layout manager, which owns the container.
class NSTextView : public NSObject {
public:
    /// A view on the text system of the container, or on a new one of its own.
    static Ref<NSTextView> initWithTextContainer(const Ref<NSTextContainer>& container);
    static Ref<NSTextView> init();
    ~NSTextView() override;

    Ref<NSTextStorage> textStorage() const { return textStorage_; }
    Ref<NSTextContainer> textContainer() const { return textContainer_; }
    Ref<NSString> string() const;
    /// None when the range reaches beyond the text.
    Ref<NSAttributedString> attributedSubstringFromRange(Range range) const;

    /// Inside the text, also after an edit that went past the view.
    Range selectedRange() const;
    /// A range that reaches beyond the text is cut to it. Posts the selection notification when the selection really
    /// changes. An empty selection takes over the typing attributes of the character before it.
    void setSelectedRange(Range range);

    /// The attributes of the next typed character.
    Ref<NSDictionary> typingAttributes() const { return typingAttributes_; }
    void setTypingAttributes(Ref<NSDictionary> attributes);

    /// Types over the selection and puts an empty selection behind the new text. Refused (false) while not editable.
    bool insertText(const Ref<NSString>& text);
    /// Deletes the selection, or the grapheme cluster before (after) an empty one.
    bool deleteBackward();
    bool deleteForward();
    bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }

    // To be called around a change made through the text storage: asks whether it is allowed, and posts its
    // notification.
    bool shouldChangeTextInRange(Range range) const;
    void didChangeText();

    /// Draws at once, through the hook that a window's view has set.
    void display();
    void setDisplayHook(std::function<void()> hook) { displayHook_ = std::move(hook); }

    std::string className() const override { return "NSTextView"; }

protected:
    NSTextView();

private:
    void adoptTextContainer(const Ref<NSTextContainer>& container);
    void postSelectionChange(Range oldRange);
    bool replaceCharacters(Range range, const NSAttributedString& text);

    Ref<NSTextStorage> textStorage_;
    Ref<NSTextContainer> textContainer_;
    Range selectedRange_;
    Ref<NSDictionary> typingAttributes_;
    bool editable_ = true;
    std::function<void()> displayHook_;
};

}  // namespace qz
