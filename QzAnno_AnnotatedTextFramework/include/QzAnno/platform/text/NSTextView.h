#pragma once

#include <memory>

#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextContainer.h"
#include "QzAnno/platform/text/NSTextStorage.h"

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
    ///@{
    static Ref<NSTextView> initWithTextContainer(const Ref<NSTextContainer>& container);
    static Ref<NSTextView> init();
    ///@}
    ~NSTextView() override;

    /// Never none.
    ///@{
    Ref<NSTextStorage> textStorage() const { return textStorage_; }
    Ref<NSTextContainer> textContainer() const { return textContainer_; }
    ///@}
    /// A copy of the text at every call.
    Ref<NSString> string() const;
    /// None when the range reaches beyond the text.
    Ref<NSAttributedString> attributedSubstringFromRange(Range range) const;

    /// Inside the text, also after an edit that went past the view.
    Range selectedRange() const;
    /// A range that reaches beyond the text is cut to it. Posts the selection notification when the selection really
    /// changes. An empty selection takes over the typing attributes of the character before it.
    void setSelectedRange(Range range);

    /// The attributes of the next typed character; at the start the default font. Never none: setting none sets the
    /// empty dictionary.
    ///@{
    Ref<NSDictionary> typingAttributes() const { return typingAttributes_; }
    void setTypingAttributes(Ref<NSDictionary> attributes);
    ///@}

    /// Types over the selection and puts an empty selection behind the new text. Refused (false) while not editable.
    bool insertText(const Ref<NSString>& text);
    /// Deletes the selection, or the grapheme cluster before (after) an empty one. False where there is none, and while
    /// not editable.
    ///@{
    bool deleteBackward();
    bool deleteForward();
    ///@}
    /// Whether the user may edit; so at the start. Edits of the text storage are not held up.
    ///@{
    bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }
    ///@}

    /// Where typing and deleting record their inverse; none at the start. What is typed, or deleted, in one go is
    /// undone at once. Changes made through the text storage are not recorded; whoever exchanges the text for another
    /// one calls `forgetUndo` or `setUndoPlace`.
    ///@{
    void setUndoManager(const Ref<NSUndoManager>& undoManager);
    const Ref<NSUndoManager>& undoManager() const { return undo_; }
    ///@}
    /// Takes the view's steps out of the undo manager, those to be redone too.
    void forgetUndo();
    /// For whoever shows one of several texts: steps recorded from now on call this before they are undone or redone,
    /// to bring their text back into the view.
    void setUndoPlace(Callback<void()> undoPlace) { undoPlace_ = std::move(undoPlace); }
    /// What is typed next is a step of its own, for whoever has recorded something else in between.
    void breakUndoCoalescing() { lastRecord_.reset(); }

    /// Text that an input method is still composing stands in the text, but is not recorded for undo. Replaces the
    /// marked text, or else the selection, and selects `selectedInside`, counted from its start. Refused while not
    /// editable. An empty text ends the marking; the text must not be none.
    bool setMarkedText(const Ref<NSString>& text, Range selectedInside);
    /// Empty when nothing is marked.
    Range markedRange() const { return markedRange_; }
    /// Keeps the marked text as if it had been typed.
    void unmarkText();

    /// To be called around a change made through the text storage: asks whether it is allowed, and posts its
    /// notification. Allowed while editable, when the range lies inside the text.
    ///@{
    bool shouldChangeTextInRange(Range range) const;
    void didChangeText();
    ///@}

    /// Draws at once, through the hook that a window's view has set; does nothing without one.
    ///@{
    void display();
    void setDisplayHook(Callback<void()> hook) { displayHook_ = std::move(hook); }
    ///@}

    std::string className() const override { return "NSTextView"; }

protected:
    NSTextView();

private:
    void adoptTextContainer(const Ref<NSTextContainer>& container);
    void postSelectionChange(Range oldRange);
    /// An edit that is to be undone: what stands in `range` now takes the place of `former`.
    struct UndoRecord {
        Range range;
        Ref<NSAttributedString> former;
        Range selection;
    };

    bool replaceCharacters(Range range, const NSAttributedString& text);
    bool replaceUnrecorded(Range range, const NSAttributedString& text);
    void dropMarkedText();
    void record(UndoRecord edit);
    bool continuesLastRecord(const UndoRecord& edit);
    void playBack(const UndoRecord& edit);

    Ref<NSTextStorage> textStorage_;
    Ref<NSTextContainer> textContainer_;
    Range selectedRange_;
    Ref<NSDictionary> typingAttributes_;
    bool editable_ = true;
    Range markedRange_;
    Ref<NSUndoManager> undo_;
    // Owned by the undo manager's record; the next edit may grow it.
    std::weak_ptr<UndoRecord> lastRecord_;
    Callback<void()> undoPlace_;
    Callback<void()> displayHook_;
};

}  // namespace qz
