#pragma once

#include <functional>

#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

// Sets of annotation keys; null counts as empty.

Ref<NSSet> unionOf(const Ref<NSSet>& a, const Ref<NSSet>& b);
Ref<NSSet> intersectionOf(const Ref<NSSet>& a, const Ref<NSSet>& b);
Ref<NSSet> difference(const Ref<NSSet>& a, const Ref<NSSet>& b);

/// Visits the range in runs of equal annotation lists, in order; `list` is null for a run without one.
void forEachAnnoRun(const NSAttributedString& text, Range range,
                    const std::function<void(Range run, const Ref<NSSet>& list)>& visit);

}  // namespace qz
