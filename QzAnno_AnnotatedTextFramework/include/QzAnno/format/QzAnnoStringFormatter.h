#pragma once

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/text/NSFormatter.h"

namespace qz {

/// Turns annotated strings into attributed strings for the text system to lay out, resolving their keys in one palette.
///
/// Does not own the palette. Without one, or after it has died, annotated strings cannot be resolved and the result is
/// null.
class QzAnnoStringFormatter final : public NSFormatter {
public:
    /// Has no palette and is not in list mode.
    static Ref<QzAnnoStringFormatter> init();
    /// The same formatter.
    Ref<QzAnnoStringFormatter> copy() { return refTo(*this); }

    /// The palette that resolves keys; null removes it.
    ///@{
    Ref<QzAnnoPalette> palette() const { return palette_.lock(); }
    void setPalette(const Ref<QzAnnoPalette>& palette) { palette_ = palette; }
    ///@}
    /// In list mode text is centred and black, at the system font size and with uniform line heights, for display in
    /// lists.
    void setListMode(bool listMode) { listmode_ = listMode; }
    /// The attributes of text without annotations, with no font filled in; null without a palette.
    Ref<NSDictionary> defaultAttributes() const;

    /// Returns the text of an annotated or attributed string; any other object itself.
    Ref<NSObject> stringForObjectValue(const Ref<NSObject>& object) const override;
    /// Converts a `QzAnnoString` run by run, with the frame attributes uniform over the text. An attributed string is
    /// returned itself, or in list mode as a copy in the list style. The default attributes are not used.
    Ref<NSAttributedString> attributedStringForObjectValue(
        const Ref<NSObject>& object, const Ref<NSDictionary>& withDefaultAttributes = {}) const override;
    /// There is no conversion back: an attributed string logs a line and yields a placeholder text (true); anything
    /// else is a violated assertion (false).
    bool getObjectValue(Ref<NSObject>& objectValue, const Ref<NSObject>& forString,
                        std::string* errorDescription) const override;

    /// Replaces every line feed with U+204B, so that a multi-line title shows on one line.
    ///@{
    static void replaceNewlineWithParagraphMarkers(NSMutableAttributedString& text);
    static void replaceNewlineWithParagraphMarkers(QzMutableAnnoString& text);
    ///@}

    std::string className() const override { return "QzAnnoStringFormatter"; }

private:
    QzAnnoStringFormatter() = default;

    /// The attributes of a run with these keys, including a font.
    Ref<NSDictionary> completeAttributes(const Ref<NSSet>& keys, const QzAnnoPalette& palette) const;
    Ref<NSAttributedString> formatted(const QzAnnoString& string, const QzAnnoPalette& palette) const;

    WeakRef<QzAnnoPalette> palette_;
    bool listmode_ = false;
};

}  // namespace qz
