#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The attribute of attributed strings whose value is the `NSSet` of `QzAnnoKey` that hold on a run.
inline const Ref<NSString> QzAnnoAttributeName = "QzAnnoList"_ns;

}  // namespace qz
