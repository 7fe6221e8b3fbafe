#pragma once

#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/text/NSTextView.h"

namespace qz {

/// Reports which annotations its selection carries. Text views do so without deriving from this class.
class QzSelectedAnnotationReporting {
public:
    virtual ~QzSelectedAnnotationReporting() = default;
    /// Fills the sets with `QzAnnoKey`. Returns false and leaves them unchanged if there is nothing to report.
    virtual bool getImmutableAnnotationKeys(Ref<NSSet>& immutableKeys, Ref<NSSet>& selectedAnnotationKeys,
                                            Ref<NSSet>& sparselySelectedAnnotationKeys) const = 0;
};

/// For a selection, reports the frame keys, the keys that cover all of it, and the keys that cover part of it; for an
/// insertion point, every key used in the text, the frame keys, and an empty set. Returns false and leaves the sets
/// unchanged if the text is empty or its first character has no list of frame keys.
bool getImmutableAnnotationKeys(const NSTextView& textView, Ref<NSSet>& immutableKeys,
                                Ref<NSSet>& selectedAnnotationKeys, Ref<NSSet>& sparselySelectedAnnotationKeys);

/// Reports for a text view or a `QzSelectedAnnotationReporting`; returns false for any other object and for null.
bool getImmutableAnnotationKeys(const Ref<NSObject>& ofObject, Ref<NSSet>& immutableKeys,
                                Ref<NSSet>& selectedAnnotationKeys, Ref<NSSet>& sparselySelectedAnnotationKeys);

}  // namespace qz
