#include "QzAnno/ui/AnnotationReporting.h"

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno_AnnotatedTextFramework/ui/KeySets.h"

namespace qz {

bool getImmutableAnnotationKeys(const NSTextView& textView, Ref<NSSet>& immutableKeys,
                                Ref<NSSet>& selectedAnnotationKeys, Ref<NSSet>& sparselySelectedAnnotationKeys) {
    const Ref<NSTextStorage> text = textView.textStorage();
    if (!text || text->length() == 0) return false;
    const auto frame = text->attributesAtIndex(0)->objectForKey<NSSet>(*QzFrameAnnoAttributeName);
    if (!frame) return false;

    const Range selection = textView.selectedRange();
    Ref<NSSet> selected, sparse = NSSet::set();
    if (selection.length == 0) {
        Ref<NSSet> used = NSSet::set();
        forEachAnnoRun(*text, {0, text->length()}, [&](Range, const Ref<NSSet>& list) { used = unionOf(used, list); });
        immutableKeys = used;
        selected = frame;
    } else {
        // A run without a list does not count, so the first list starts the common set.
        forEachAnnoRun(*text, selection, [&](Range, const Ref<NSSet>& list) {
            if (!list) return;
            selected = selected ? intersectionOf(selected, list) : list;
            sparse = unionOf(sparse, list);
        });
        if (!selected) selected = NSSet::set();
        sparse = difference(sparse, selected);
        immutableKeys = frame;
    }
    selectedAnnotationKeys = selected;
    sparselySelectedAnnotationKeys = sparse;
    return true;
}

bool getImmutableAnnotationKeys(const Ref<NSObject>& ofObject, Ref<NSSet>& immutableKeys,
                                Ref<NSSet>& selectedAnnotationKeys, Ref<NSSet>& sparselySelectedAnnotationKeys) {
    if (const auto textView = std::dynamic_pointer_cast<NSTextView>(ofObject)) {
        return getImmutableAnnotationKeys(*textView, immutableKeys, selectedAnnotationKeys,
                                          sparselySelectedAnnotationKeys);
    }
    const auto reporting = std::dynamic_pointer_cast<QzSelectedAnnotationReporting>(ofObject);
    return reporting &&
           reporting->getImmutableAnnotationKeys(immutableKeys, selectedAnnotationKeys, sparselySelectedAnnotationKeys);
}

}  // namespace qz
