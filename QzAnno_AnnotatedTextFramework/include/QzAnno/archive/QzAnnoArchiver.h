#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"

namespace qz {

/// An archiver that carries a palette, for hosts whose own objects ask for it while they are written. It has no tokens,
/// so it writes no annotation keys: that is `QzTokeningArchiver`'s work. Keeps the palette.
class QzAnnoArchiver final : public NSArchiver {
public:
    /// None, with one line in `error` that says what failed and where in the object it stands.
    static Ref<NSData> archivedDataWithRootObject(const Ref<NSObject>& rootObject,
                                                  const Ref<QzAnnoPalette>& annoPalette, std::string* error = nullptr);
    /// For objects that are written one by one.
    static Ref<QzAnnoArchiver> initWithAnnoPalette(const Ref<QzAnnoPalette>& annoPalette);

    /// As it was given: may be none.
    const Ref<QzAnnoPalette>& palette() const { return pal_; }
    std::string className() const override { return "QzAnnoArchiver"; }

private:
    explicit QzAnnoArchiver(const Ref<QzAnnoPalette>& annoPalette) : pal_(annoPalette) {}

    const Ref<QzAnnoPalette> pal_;
};

/// Reads the older archives, in which keys are plain names (class version 0): a key that the palette knows becomes the
/// palette's own, another one a new key without palette. Keeps the palette.
class QzAnnoUnarchiver final : public NSUnarchiver {
public:
    /// The first object of the stream; none, with one line in `error`, when it cannot be read.
    static Ref<NSObject> unarchiveObjectWithData(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette,
                                                 std::string* error = nullptr);
    /// For objects that are read one by one.
    static Ref<QzAnnoUnarchiver> initForReadingWithData(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette);

    /// As it was given: may be none.
    const Ref<QzAnnoPalette>& palette() const { return pal_; }
    std::string className() const override { return "QzAnnoUnarchiver"; }

private:
    QzAnnoUnarchiver(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette)
        : NSUnarchiver(data), pal_(annoPalette) {}

    const Ref<QzAnnoPalette> pal_;
};

}  // namespace qz
