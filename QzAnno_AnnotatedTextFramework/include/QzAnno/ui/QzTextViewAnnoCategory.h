#pragma once

#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/ui/QzAnnoChanging.h"

namespace qz {

/// Something to which annotation changes can be sent. A text view is, without deriving from this.
class QzAnnoUsing {
public:
    virtual ~QzAnnoUsing() = default;
    /// Carries out the change; the sender is there during the call only.
    virtual void changeAnno(const QzAnnoChanging& sender) = 0;
};

/// Switches annotations over the selection of a text view, or over the whole text when nothing is selected: every
/// character gets the sender's keys; of the others, those that covered all of the range are taken away, those that
/// covered a part of it stay.
///
/// Changes the annotation lists and, where it is installed, the font, which the host replaces when it formats the text
/// anew. The view is not asked for permission, its selection stays, nothing can be undone here, and
/// `NSTextDidChangeNotification` is posted once. An empty text is left alone.
void changeAnno(NSTextView& textView, const QzAnnoChanging& sender);

/// Whether annotation changes can be sent to the object: a text view, or a `QzAnnoUsing`.
bool isAnnoUsing(const NSObject& object);
/// Sends them; false when the object cannot take any.
bool sendChangeAnno(NSObject& toObject, const QzAnnoChanging& sender);

}  // namespace qz
