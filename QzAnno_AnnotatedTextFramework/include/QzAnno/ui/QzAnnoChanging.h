#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSSet.h"

namespace qz {

/// What the sender of `changeAnno:` answers: the palette that it shows and the annotations that the user has switched
/// on.
class QzAnnoChanging {
public:
    virtual ~QzAnnoChanging() = default;
    /// None while it shows none.
    virtual Ref<QzAnnoPalette> palette() const = 0;
    /// A set of `QzAnnoKey`; none counts as the empty one.
    virtual Ref<NSSet> selectedAnnoKeys() const = 0;
};

}  // namespace qz
