#pragma once

#include "QzAnno/model/QzAnnoString.h"

namespace qz {

/// What palettes, readers of archives and the mutable string do to objects that hosts are given to look at. It is no
/// part of the public headers, since it would get round the lock of a palette and change strings that others rely on.
class MutableSupport {
public:
    /// Binds an unbound key; refused while it is bound.
    static bool setPalette(QzAnnoKey& key, const Ref<QzAnnoPalette>& palette);
    /// Unbinds the key from exactly this palette; refused otherwise. True for an unbound key and no palette.
    static bool clearPalette(QzAnnoKey& key, const Ref<QzAnnoPalette>& palette);

    /// `QzAnnoKey` to `QzAnnoBits`: the string's own rows.
    static const Ref<NSDictionary>& annotations(const QzAnnoString& string) { return string.annotations_; }
    /// Takes over the entries, with `doCopy` a copy of each bit set. Refused for null, and when an entry is not a key
    /// with a bit set.
    static bool setAnnotations(QzAnnoString& string, const Ref<NSDictionary>& annotations, bool doCopy);
    /// Null counts as empty.
    static void setString(QzAnnoString& string, const Ref<NSString>& text);
};

}  // namespace qz
