#pragma once

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/text/NSFormatter.h"

namespace qz {

/// Turns annotated strings into attributed strings that the text system can lay out, resolving their keys through one
/// palette.
///
/// The palette is not owned; once it has died the formatter has none. Without a palette annotated strings have no
/// attributes to resolve to, and the result is none.
class QzAnnoStringFormatter final : public NSFormatter {
public:
    /// Without a palette, and not in list mode.
    static Ref<QzAnnoStringFormatter> init();
    /// The same formatter.
    Ref<QzAnnoStringFormatter> copy() { return refTo(*this); }

    /// What keys are resolved through; none for none.
    ///@{
    Ref<QzAnnoPalette> palette() const { return palette_.lock(); }
    void setPalette(const Ref<QzAnnoPalette>& palette) { palette_ = palette; }
    ///@}
    /// In list mode text comes centred, in black, at the system font size and with lines of one height, as lists show
    /// it.
    void setListMode(bool listMode) { listmode_ = listMode; }
    /// The attributes of text without annotations, not completed with a font; none without a palette.
    Ref<NSDictionary> defaultAttributes() const;

    /// The text of an annotated or an attributed string; any other object itself.
    Ref<NSObject> stringForObjectValue(const Ref<NSObject>& object) const override;
    /// An attributed string of a `QzAnnoString`, run by run, with the frame attributes uniform over the text; an
    /// attributed string is returned itself, in list mode as a copy in the list's looks. The default attributes are not
    /// used.
    Ref<NSAttributedString> attributedStringForObjectValue(
        const Ref<NSObject>& object, const Ref<NSDictionary>& withDefaultAttributes = {}) const override;
    /// There is no conversion back: anything but an attributed string is a broken assertion (false), and an attributed
    /// string logs a line and yields a placeholder text (true).
    bool getObjectValue(Ref<NSObject>& objectValue, const Ref<NSObject>& forString,
                        std::string* errorDescription) const override;

    /// Puts U+204B in place of every line feed, so that a title of several lines shows as one.
    ///@{
    static void replaceNewlineWithParagraphMarkers(NSMutableAttributedString& text);
    static void replaceNewlineWithParagraphMarkers(QzMutableAnnoString& text);
    ///@}

    std::string className() const override { return "QzAnnoStringFormatter"; }

private:
    QzAnnoStringFormatter() = default;

    /// The attributes of a run with these keys, complete with a font.
    Ref<NSDictionary> completeAttributes(const Ref<NSSet>& keys, const QzAnnoPalette& palette) const;
    Ref<NSAttributedString> formatted(const QzAnnoString& string, const QzAnnoPalette& palette) const;

    WeakRef<QzAnnoPalette> palette_;
    bool listmode_ = false;
};

}  // namespace qz
