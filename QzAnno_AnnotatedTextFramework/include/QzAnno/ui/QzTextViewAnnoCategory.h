#pragma once

#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/ui/QzAnnoChanging.h"

namespace qz {

/// Receives annotation changes. Text views do so without deriving from this class.
class QzAnnoUsing {
public:
    virtual ~QzAnnoUsing() = default;
    /// Performs the change; the sender is valid only during the call.
    virtual void changeAnno(const QzAnnoChanging& sender) = 0;
};

/// Changes the annotations of a text view's selection, or of the whole text if nothing is selected. Every character
/// gets the sender's keys; other keys are removed if they covered the whole range and kept if they covered part of it.
///
/// Changes the annotation lists and, where it is installed, the font, which the host replaces when it reformats the
/// text. Does not ask the view for permission, keeps its selection, records nothing for undo, and posts
/// `NSTextDidChangeNotification` once. Does nothing if the text is empty.
void changeAnno(NSTextView& textView, const QzAnnoChanging& sender);

/// Whether the object can receive annotation changes: a text view or a `QzAnnoUsing`.
bool isAnnoUsing(const NSObject& object);
/// Sends the change; returns false if the object cannot receive it.
bool sendChangeAnno(NSObject& toObject, const QzAnnoChanging& sender);

}  // namespace qz
