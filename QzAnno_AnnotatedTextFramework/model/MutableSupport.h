#pragma once

#include "QzAnno/model/QzAnnoString.h"

namespace qz {

/// Changes that palettes, archive readers and the mutable string make to objects that hosts may only read. Private,
/// since a host could use it to bypass a palette's lock and change strings that others rely on.
class MutableSupport {
public:
    /// Binds an unbound key; refused while it is bound.
    static bool setPalette(QzAnnoKey& key, const Ref<KeyPalette>& palette);
    /// Unbinds the key from this palette; refused if it is bound to another. True for an unbound key and a null
    /// palette.
    static bool clearPalette(QzAnnoKey& key, const Ref<KeyPalette>& palette);

    /// `QzAnnoKey` to `QzAnnoBits`: the string's own rows.
    static const Ref<NSDictionary>& annotations(const QzAnnoString& string) { return string.annotations_; }
    /// Takes the entries, copying each bit set if `doCopy`. Refused if null, or if an entry is not a key with a bit
    /// set.
    static bool setAnnotations(QzAnnoString& string, const Ref<NSDictionary>& annotations, bool doCopy);
    /// Null counts as empty.
    static void setString(QzAnnoString& string, const Ref<NSString>& text);
};

}  // namespace qz
