#include "QzAnno_AnnotatedTextFramework/ui/KeyRenaming.h"

namespace qz {

bool replaceAnnoNamed(QzAnnoPalette& palette, const Ref<const QzAnno>& anno, const Ref<NSString>& name) {
    if (!anno || !palette.editable()) return false;
    const Ref<QzAnnoKey> key = anno->annokey();
    const Ref<NSString> former = key->name();
    // Rename first, so that observers of the replacement see the new name.
    if (name) key->setName(name);
    if (!palette.replaceAnno(anno)) {
        key->setName(former);
        return false;
    }
    const Ref<NSUndoManager> undo = palette.undoManager();
    if (name && !areEqual(name, former) && undo && !undo->isUndoing() && !undo->isRedoing()) {
        undo->prepareWithInvocationTarget(palette).invoke([key, former] { key->setName(former); });
    }
    return true;
}

}  // namespace qz
