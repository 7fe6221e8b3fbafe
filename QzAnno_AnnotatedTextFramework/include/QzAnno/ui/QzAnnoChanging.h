#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSSet.h"

namespace qz {

/// The sender of `changeAnno:`: supplies the palette that it shows and the annotations that the user has switched on.
class QzAnnoChanging {
public:
    virtual ~QzAnnoChanging() = default;
    /// Null while it shows no palette.
    virtual Ref<QzAnnoPalette> palette() const = 0;
    /// A set of `QzAnnoKey`; null counts as empty.
    virtual Ref<NSSet> selectedAnnoKeys() const = 0;
};

}  // namespace qz
