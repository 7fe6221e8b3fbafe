#pragma once

#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/text/NSTextView.h"

namespace qz {

/// Something that tells which annotations its selection carries. A text view does, without deriving from this.
class QzSelectedAnnotationReporting {
public:
    virtual ~QzSelectedAnnotationReporting() = default;
    /// Sets of `QzAnnoKey`. False, with the sets as they were, when there is nothing to report.
    virtual bool getImmutableAnnotationKeys(Ref<NSSet>& immutableKeys, Ref<NSSet>& selectedAnnotationKeys,
                                            Ref<NSSet>& sparselySelectedAnnotationKeys) const = 0;
};

/// Of a selection: the frame keys, the keys that cover all of it, and those that cover a part of it. Of an insertion
/// point: every key used in the text, the frame keys, and none. False, with the sets as they were, for an empty text
/// and for one whose first character has no list of frame keys.
bool getImmutableAnnotationKeys(const NSTextView& textView, Ref<NSSet>& immutableKeys,
                                Ref<NSSet>& selectedAnnotationKeys, Ref<NSSet>& sparselySelectedAnnotationKeys);

/// The report of a text view or of a `QzSelectedAnnotationReporting`; false for any other object and for none.
bool getImmutableAnnotationKeys(const Ref<NSObject>& ofObject, Ref<NSSet>& immutableKeys,
                                Ref<NSSet>& selectedAnnotationKeys, Ref<NSSet>& sparselySelectedAnnotationKeys);

}  // namespace qz
