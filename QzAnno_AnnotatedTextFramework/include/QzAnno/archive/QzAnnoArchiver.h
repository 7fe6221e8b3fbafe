#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"

namespace qz {

/// An archiver that carries a palette, for hosts whose own objects need it while they are written. It has no tokens and
/// cannot write annotation keys; use `QzTokeningArchiver` for those. Owns the palette.
class QzAnnoArchiver final : public NSArchiver {
public:
    /// Returns null if the object cannot be archived, with one line in `error` that says what failed and where in the
    /// object.
    static Ref<NSData> archivedDataWithRootObject(const Ref<NSObject>& rootObject,
                                                  const Ref<QzAnnoPalette>& annoPalette, std::string* error = nullptr);
    /// For writing objects one by one.
    static Ref<QzAnnoArchiver> initWithAnnoPalette(const Ref<QzAnnoPalette>& annoPalette);

    /// As given; may be null.
    const Ref<QzAnnoPalette>& palette() const { return pal_; }
    std::string className() const override { return "QzAnnoArchiver"; }

private:
    explicit QzAnnoArchiver(const Ref<QzAnnoPalette>& annoPalette) : pal_(annoPalette) {}

    const Ref<QzAnnoPalette> pal_;
};

/// Reads the older archives, in which keys are plain names (class version 0): a name in the palette becomes the
/// palette's key, any other name a new, unbound key. Owns the palette.
class QzAnnoUnarchiver final : public NSUnarchiver {
public:
    /// Returns the first object of the stream, or null, with one line in `error`, if it cannot be read.
    static Ref<NSObject> unarchiveObjectWithData(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette,
                                                 std::string* error = nullptr);
    /// For reading objects one by one.
    static Ref<QzAnnoUnarchiver> initForReadingWithData(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette);

    /// As given; may be null.
    const Ref<QzAnnoPalette>& palette() const { return pal_; }
    std::string className() const override { return "QzAnnoUnarchiver"; }

private:
    QzAnnoUnarchiver(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette)
        : NSUnarchiver(data), pal_(annoPalette) {}

    const Ref<QzAnnoPalette> pal_;
};

}  // namespace qz
