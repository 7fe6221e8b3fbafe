#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/platform/ui/NSView.h"

namespace qz {

/// Shows a text view in a window and edits it: draws its text through the layout manager of its container, so that what
/// a layout manager adds to the glyphs shows while the text is edited, and turns keys, pointer, input method and
/// clipboard into edits of the model.
///
/// A container of a bounded size is fitted into the widget, with its proportions kept. Performs "cut:", "copy:",
/// "paste:", "selectAll:", "delete:", "undo:" and "redo:", and the actions registered for text views. Text is pasted
/// plain.
class NSTextViewWidget final : public NSView {
public:
    /// Makes the widget; the parent owns it, the caller without one.
    static Ref<NSTextViewWidget> initWithTextView(const Ref<NSTextView>& textView, QWidget* parent);
    ~NSTextViewWidget() override;

    /// Never none.
    const Ref<NSTextView>& textView() const { return textView_; }
    /// A picture beneath the text, stretched over the container; none shows a checkerboard.
    void setBackdrop(const Ref<NSBitmapImageRep>& picture);
    /// Where the insertion point of an empty text stands, in container points, for a container that places text by more
    /// than the alignment of its paragraphs. None: at the container's top.
    void setInsertionPointOfEmptyText(std::function<NSRect()> place);
    /// Draws the text anew, after a change that the text view has not been told of.
    void redisplay();
    /// Where a point of the container lies in the widget.
    NSPoint pointInWidget(NSPoint containerPoint) const;

    /// What performs an action on a text view.
    using Action = std::function<void(NSTextView& textView, const Ref<NSObject>& sender)>;
    /// Lets every text view take an action. One static object of this type stands in the source file that knows how.
    class ActionRegistration {
    public:
        /// In the place of an action of that name, also of one that this class performs.
        ActionRegistration(const std::string& action, Action perform);
    };
    bool respondsTo(const std::string& action) const override;
    bool tryToPerform(const std::string& action, const Ref<NSObject>& sender) override;

    std::string className() const override { return "NSTextViewWidget"; }

private:
    NSTextViewWidget(const Ref<NSTextView>& textView, class TextWidget* widget);

    const Ref<NSTextView> textView_;
    TextWidget* textWidget() const;
};

}  // namespace qz
