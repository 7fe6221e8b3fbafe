#pragma once

#include <functional>

#include "QzAnno/model/QzAnnoString.h"

namespace qz {

/// The string with another key in the place of each of its keys. Keys for which `keyFor` returns null are left out, and
/// so are those that hold nowhere.
Ref<QzAnnoString> withKeys(const QzAnnoString& string,
                           const std::function<Ref<QzAnnoKey>(const Ref<QzAnnoKey>&)>& keyFor);

}  // namespace qz
