#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"

namespace qz {

/// Replaces the annotation of its key, under the palette's action name for a change, and renames the key, so that one
/// undo reverts both. A null name keeps the key's name. Refused if the palette refuses; a locked palette's keys keep
/// their names too.
bool replaceAnnoNamed(QzAnnoPalette& palette, const Ref<const QzAnno>& anno, const Ref<NSString>& name);

}  // namespace qz
