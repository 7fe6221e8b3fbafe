#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/platform/ui/NSView.h"

namespace qz {

/// Shows a text view in a window and lets the user edit it. Draws the text through the container's layout manager, so
/// anything it adds to the glyphs shows during editing, and turns input from keys, pointer, input method and clipboard
/// into edits of the model.
///
/// Scales a container of bounded size to fit the widget, keeping its proportions. Performs "cut:", "copy:", "paste:",
/// "selectAll:", "delete:", "undo:" and "redo:", and the actions registered for text views. Pastes plain text.
class NSTextViewWidget final : public NSView {
public:
    /// Makes the widget. The parent owns it; without a parent, the caller does.
    static Ref<NSTextViewWidget> initWithTextView(const Ref<NSTextView>& textView, QWidget* parent);
    ~NSTextViewWidget() override;

    /// Never null.
    const Ref<NSTextView>& textView() const { return textView_; }
    /// A picture beneath the text, stretched over the container; null shows a checkerboard.
    void setBackdrop(const Ref<NSBitmapImageRep>& picture);
    /// Sets the place of the insertion point in an empty text, in container points, for a container that places text by
    /// more than its paragraphs' alignment. An empty function means the container's top.
    void setInsertionPointOfEmptyText(std::function<NSRect()> place);
    /// Redraws the text after a change that the text view does not know of.
    void redisplay();
    /// Converts a point of the container to the widget's coordinates.
    NSPoint pointInWidget(NSPoint containerPoint) const;

    /// Performs an action on a text view.
    using Action = std::function<void(NSTextView& textView, const Ref<NSObject>& sender)>;
    /// Makes every text view handle an action. Define one static object of this type in the source file that performs
    /// it.
    class ActionRegistration {
    public:
        /// Replaces any action of that name, including those that this class performs.
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
