#pragma once

#include <memory>

#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextContainer.h"
#include "QzAnno/platform/text/NSTextStorage.h"

namespace qz {

/// Posted with the text view as object after the user or a command has changed its text or attributes.
inline const Ref<NSString> NSTextDidChangeNotification = "NSTextDidChangeNotification"_ns;
/// Posted with the text view as object after its selection has changed. The user info holds
/// "NSOldSelectedCharacterRange", a string "{location, length}".
inline const Ref<NSString> NSTextViewDidChangeSelectionNotification = "NSTextViewDidChangeSelectionNotification"_ns;

/// The model of an editable text view: text, selection, typing attributes. A window's view draws it and passes it
/// input.
///
/// Owns its text storage, which owns the layout manager, which owns the container.
class NSTextView : public NSObject {
public:
    /// A view of the container's text system, or of a new one.
    ///@{
    static Ref<NSTextView> initWithTextContainer(const Ref<NSTextContainer>& container);
    static Ref<NSTextView> init();
    ///@}
    ~NSTextView() override;

    /// Never null.
    ///@{
    Ref<NSTextStorage> textStorage() const { return textStorage_; }
    Ref<NSTextContainer> textContainer() const { return textContainer_; }
    ///@}
    /// Copies the text on every call.
    Ref<NSString> string() const;
    /// Returns null if the range reaches beyond the text.
    Ref<NSAttributedString> attributedSubstringFromRange(Range range) const;

    /// Always inside the text, even after an edit that bypassed the view.
    Range selectedRange() const;
    /// Cuts the range to the text. Posts the selection notification if the selection actually changes. An empty
    /// selection takes the typing attributes of the preceding character.
    void setSelectedRange(Range range);

    /// The attributes of the next typed character; initially the default font. Never null: setting null sets an empty
    /// dictionary.
    ///@{
    Ref<NSDictionary> typingAttributes() const { return typingAttributes_; }
    void setTypingAttributes(Ref<NSDictionary> attributes);
    ///@}

    /// Replaces the selection and puts an empty selection after the new text. Returns false if not editable.
    bool insertText(const Ref<NSString>& text);
    /// Deletes the selection or, if it is empty, the grapheme cluster before (after) it. Returns false if there is
    /// nothing to delete or the view is not editable.
    ///@{
    bool deleteBackward();
    bool deleteForward();
    ///@}
    /// Whether the user may edit; true by default. Edits of the text storage are always possible.
    ///@{
    bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }
    ///@}

    /// The undo manager that records typing and deleting; null by default. Consecutive typing, or deleting, is undone
    /// as one step. Changes made through the text storage are not recorded; after replacing the text, call `forgetUndo`
    /// or `setUndoPlace`.
    ///@{
    void setUndoManager(const Ref<NSUndoManager>& undoManager);
    const Ref<NSUndoManager>& undoManager() const { return undo_; }
    ///@}
    /// Removes the view's undo and redo steps from the undo manager.
    void forgetUndo();
    /// For a host that shows one of several texts: steps recorded from now on call this before they are undone or
    /// redone, to bring their text back into the view.
    void setUndoPlace(Callback<void()> undoPlace) { undoPlace_ = std::move(undoPlace); }
    /// Makes the next typing a separate undo step, after recording something else in between.
    void breakUndoCoalescing() { lastRecord_.reset(); }

    /// Inserts text that an input method is still composing, without recording it for undo. Replaces the marked text,
    /// or else the selection, and selects `selectedInside`, counted from its start. An empty text ends the marking; the
    /// text must not be null. Returns false if not editable.
    bool setMarkedText(const Ref<NSString>& text, Range selectedInside);
    /// Empty if nothing is marked.
    Range markedRange() const { return markedRange_; }
    /// Accepts the marked text as if it had been typed.
    void unmarkText();

    /// Call these around a change made through the text storage: the first checks that it is allowed, the second posts
    /// its notification. It is allowed if the view is editable and the range lies inside the text.
    ///@{
    bool shouldChangeTextInRange(Range range) const;
    void didChangeText();
    ///@}

    /// Redraws at once through the hook set by a window's view; does nothing without one.
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
    /// An edit to undo: the text now in `range` has replaced `former`.
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
    // Owned by the undo manager's record; the next edit may extend it.
    std::weak_ptr<UndoRecord> lastRecord_;
    Callback<void()> undoPlace_;
    Callback<void()> displayHook_;
};

}  // namespace qz
