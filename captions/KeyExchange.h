#pragma once

#include <functional>

#include "QzAnno/model/QzAnnoString.h"

namespace qz {

/// The string with each key replaced by another. Keys for which `keyFor` returns null are left out, and so are keys
/// that hold nowhere.
Ref<QzAnnoString> withKeys(const QzAnnoString& string,
                           const std::function<Ref<QzAnnoKey>(const Ref<QzAnnoKey>&)>& keyFor);

}  // namespace qz
